"""What is told to the user without a traceback."""


class StudyError(Exception):
    """A plan that can't be carried out, or what went wrong on the way; its text is for the user."""


class Refused(Exception):
    """A quantity that a run doesn't have: a trace that doesn't redevelop, an empty window."""
