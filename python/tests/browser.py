#!/usr/bin/python3
"""Opens a page in a headless browser: what its console says, how large its plots are, pictures of it.

    python/tests/browser.py PAGE.html [FOLDER]    writes desktop.png, phone.png ... into FOLDER
"""

import base64
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
from dataclasses import dataclass
from html import unescape
from pathlib import Path

PROGRAMS = ("chromium-headless-shell", "chromium")
DESKTOP, PHONE = (1360, 900), (390, 844)
DARK = "--blink-settings=preferredColorScheme=0"
LIGHT = "--blink-settings=preferredColorScheme=1"

# Put into a copy of the page. It leaves what it measures as a text in the document.
MEASURE = """<script>
window.addEventListener("load", () => {
  const sizes = [...document.querySelectorAll("figure svg")].map(svg => {
    const box = svg.getBoundingClientRect();
    const text = svg.querySelector("text").getBoundingClientRect();
    const clipped = [...svg.querySelectorAll("text")].filter(label => {
      const at = label.getBoundingClientRect();
      return at.left < box.left - 1 || at.right > box.right + 1 || at.top < box.top - 1;
    });
    return {width: box.width, height: box.height, text: text.height, clipped: clipped.length,
            lines: svg.querySelectorAll("path").length};
  });
  const out = document.createElement("pre");
  out.id = "measured";
  out.textContent = JSON.stringify({
    sizes, inner: window.innerWidth, wide: document.documentElement.scrollWidth,
    tall: document.documentElement.scrollHeight,
    ground: getComputedStyle(document.body).backgroundColor,
    ink: getComputedStyle(document.body).color});
  document.body.append(out);
});
</script>"""


@dataclass(frozen=True)
class View:
    """A page as a browser of some size shows it; lengths in CSS pixels."""

    console: list[str]
    sizes: list[dict[str, float]]
    inner: int
    wide: int
    tall: int
    ground: str
    ink: str


def browser() -> str:
    for program in PROGRAMS:
        if found := shutil.which(program):
            return found
    raise RuntimeError(f"no browser: install one of {', '.join(PROGRAMS)}")


def _open(page: Path, size: tuple[int, int], scheme: str, *options: str) -> tuple[str, str]:
    with tempfile.TemporaryDirectory(prefix="browser-") as profile:
        command = [
            browser(),
            "--headless",
            "--no-sandbox",
            "--disable-gpu",
            "--hide-scrollbars",
            "--enable-logging=stderr",
            "--host-resolver-rules=MAP * ~NOTFOUND",  # no network
            f"--user-data-dir={profile}",
            f"--window-size={size[0]},{size[1]}",
            scheme,
            *options,
            page.resolve().as_uri(),
        ]
        result = subprocess.run(
            command, capture_output=True, text=True, errors="replace", timeout=120, check=True
        )
    return result.stdout, result.stderr


def view(page: Path, size: tuple[int, int], scheme: str = LIGHT) -> View:
    """Opens the page and measures it."""
    with tempfile.TemporaryDirectory() as folder:
        copy = Path(folder) / page.name
        copy.write_text(page.read_text().replace("</body>", MEASURE + "</body>"))
        document, log = _open(copy, size, scheme, "--dump-dom")
    measured = re.search(r'<pre id="measured">(.*?)</pre>', document, re.DOTALL)
    if not measured:
        raise RuntimeError(f"the browser showed nothing of {page}: {log[-500:]}")
    console = [line for line in log.splitlines() if ":CONSOLE" in line]
    return View(console, **json.loads(unescape(measured[1])))


# Three dimensions without a graphics card.
WEBGL = ("--use-gl=angle", "--use-angle=swiftshader", "--enable-unsafe-swiftshader", "--ignore-gpu-blocklist")


class Tab:
    """A page that scripts can drive, through the browser's debugging pipe."""

    def __init__(self, page: Path, size: tuple[int, int] = DESKTOP) -> None:
        self.console: list[str] = []
        self._sent = 0
        self._profile = tempfile.TemporaryDirectory(prefix="browser-", ignore_cleanup_errors=True)
        to_read, self._to_browser = os.pipe()
        self._from_browser, to_write = os.pipe()
        command = [browser(), "--headless", "--no-sandbox", "--hide-scrollbars", "--remote-debugging-pipe", LIGHT, *WEBGL]
        command += [f"--user-data-dir={self._profile.name}", f"--window-size={size[0]},{size[1]}"]
        command += ["--host-resolver-rules=MAP * ~NOTFOUND", "about:blank"]
        self._process = subprocess.Popen(  # it reads from file 3 and writes to file 4
            ["bash", "-c", f'exec "$@" 3<&{to_read} 4>&{to_write}', "bash", *command],
            pass_fds=(to_read, to_write),
            stderr=subprocess.DEVNULL,
        )
        os.close(to_read)
        os.close(to_write)
        self._input = os.fdopen(self._from_browser, "rb")
        self._session: str | None = None
        targets = self.ask("Target.getTargets")["targetInfos"]
        target = next(target["targetId"] for target in targets if target["type"] == "page")
        self._session = self.ask("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Runtime", "Log", "Page"):
            self.ask(f"{domain}.enable")
        self.ask("Page.navigate", url=page.resolve().as_uri())

    def ask(self, method: str, **parameters: object) -> dict:
        """What the browser answers to a call of its protocol."""
        self._sent += 1
        message = {"id": self._sent, "method": method, "params": parameters}
        if self._session:
            message["sessionId"] = self._session
        os.write(self._to_browser, json.dumps(message).encode() + b"\0")
        while True:
            answer = self._next()
            if answer.get("id") == self._sent:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']['message']}")
                return answer["result"]

    def _next(self) -> dict:
        """The next message; what it tells of the console is kept."""
        data = b""
        while not data.endswith(b"\0"):
            byte = self._input.read(1)
            if not byte:
                raise RuntimeError("the browser has ended")
            data += byte
        message = json.loads(data[:-1])
        # That a script looks at pixels, which is slow, is no fault.
        if message.get("method") in TOLD and "ReadPixels" not in str(message["params"]):
            self.console.append(str(message["params"]))
        return message

    def evaluate(self, script: str) -> object:
        """What a script returns, the body of an asynchronous function; it waits until the page is there."""
        page = 'document.readyState === "complete" || await new Promise(done => addEventListener("load", done));'
        result = self.ask(
            "Runtime.evaluate", expression=f"(async () => {{ {page} {script} }})()", awaitPromise=True, returnByValue=True
        )
        if "exceptionDetails" in result:
            raise RuntimeError(str(result["exceptionDetails"].get("exception", {}).get("description")))
        return result["result"].get("value")

    def picture(self) -> bytes:
        return base64.b64decode(self.ask("Page.captureScreenshot")["data"])

    def __enter__(self) -> "Tab":
        return self

    def __exit__(self, *_: object) -> None:
        self._process.kill()
        self._process.wait()
        os.close(self._to_browser)
        self._input.close()
        self._profile.cleanup()


TOLD = ("Runtime.consoleAPICalled", "Runtime.exceptionThrown", "Log.entryAdded")


def screenshot(page: Path, size: tuple[int, int], picture: Path, scheme: str = LIGHT) -> None:
    _open(page, size, scheme, f"--screenshot={picture.resolve()}")


def check(page: Path, plots: int) -> None:
    """No errors, no plot without a size, nothing clipped or wider than the window, readable texts."""
    assert plots > 5
    views = [view(page, size) for size in (DESKTOP, PHONE)]
    for seen in views:
        assert seen.console == []
        assert len(seen.sizes) == plots
        assert min(size["width"] for size in seen.sizes) > 300
        assert min(size["height"] for size in seen.sizes) > 150
        assert min(size["text"] for size in seen.sizes) >= 9
        assert min(size["lines"] for size in seen.sizes) > 10
        assert not any(size["clipped"] for size in seen.sizes)
        assert seen.wide <= seen.inner
    dark = view(page, PHONE, DARK)
    assert (dark.ground, dark.ink) != (views[0].ground, views[0].ink)


def main(page: Path, folder: Path) -> int:
    folder.mkdir(parents=True, exist_ok=True)
    faults = []
    for name, size, scheme in (
        ("desktop", DESKTOP, LIGHT),
        ("phone", PHONE, LIGHT),
        ("dark", DESKTOP, DARK),
    ):
        seen = view(page, size, scheme)
        faults += [f"{name}: {line}" for line in seen.console]
        faults += [f"{name}: a plot of {s}" for s in seen.sizes if min(s["width"], s["height"]) < 100]
        if not seen.sizes:
            faults.append(f"{name}: no plots")
        if seen.wide > seen.inner:
            faults.append(f"{name}: the page is {seen.wide} wide, the window {seen.inner}")
        screenshot(page, (size[0], seen.tall), folder / f"{name}.png", scheme)
        print(f"{name}: {len(seen.sizes)} plots, page {seen.wide} x {seen.tall}, {seen.ink} on {seen.ground}")
    for fault in faults:
        print(fault, file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(Path(sys.argv[1]), Path(sys.argv[2] if len(sys.argv) > 2 else "screenshots")))
