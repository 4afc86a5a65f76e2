"""Names of quantities as tables and figures show them."""


def short(name: str) -> str:
    """A parameter by its key, anything else as it is."""
    return name.rpartition("/")[2] if ":" in name else name
