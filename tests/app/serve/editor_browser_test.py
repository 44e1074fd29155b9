#!/usr/bin/python3
"""The editor page of `tagwright serve` in headless Chromium: give the token,
pick a page, read a part, replace it, and see the new text and the backup.
Exits 77 (skipped) only where Chromium or its driver is missing."""
import argparse
import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

CHROMIUM, DRIVER = "/usr/bin/chromium", "/usr/bin/chromedriver"
PAGE = ("<html><body>\r\n<p class=\"news\">Ferries run to the winter timetable.</p>\r\n"
        "<p class=\"news\">Older news is kept for a year.</p>\r\n</body></html>\r\n")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--tagwright", required=True)
    parser.add_argument("--screenshot", required=True, help="where to keep the page's picture")
    args = parser.parse_args()
    try:
        from selenium import webdriver
        from selenium.webdriver.chrome.service import Service
        from selenium.webdriver.common.by import By
        from selenium.webdriver.support.ui import Select, WebDriverWait
    except ImportError:
        print("python3-selenium is missing")
        return 77
    if not (os.access(CHROMIUM, os.X_OK) and os.access(DRIVER, os.X_OK)):
        print("chromium or chromium-driver is missing")
        return 77

    work = Path(tempfile.mkdtemp(prefix="tagwright-editor-"))
    site = work / "site"
    site.mkdir()
    (site / "news.htm").write_bytes(PAGE.encode())
    (site / "index.htm").write_bytes(b"<p>Home</p>\r\n")
    (work / "token").write_text("editor-token\n")
    server = subprocess.Popen(
        [args.tagwright, "serve", "--root", str(site), "--listen", "127.0.0.1:0",
         "--token-file", str(work / "token")],
        stderr=subprocess.PIPE, text=True)
    browser = None
    try:
        port = re.search(r"127\.0\.0\.1:(\d+)/", server.stderr.readline()).group(1)
        options = webdriver.ChromeOptions()
        options.binary_location = CHROMIUM
        for flag in ("--headless", "--no-sandbox", "--disable-gpu", "--disable-quic",
                     "--no-first-run", "--disable-background-networking",
                     "--disable-component-update", "--disable-sync",
                     "--window-size=1000,900", f"--user-data-dir={work / 'profile'}"):
            options.add_argument(flag)
        browser = webdriver.Chrome(service=Service(DRIVER), options=options)
        wait = WebDriverWait(browser, 15)
        element = browser.find_element

        browser.get(f"http://127.0.0.1:{port}/_tagwright/")
        element(By.ID, "token").send_keys("editor-token")
        element(By.ID, "save-token").click()
        wait.until(lambda b: "news.htm" in [o.text for o in Select(element(By.ID, "page")).options])
        Select(element(By.ID, "page")).select_by_visible_text("news.htm")
        for field, value in (("element", "p"), ("attribute-name", "class"),
                             ("attribute-value", "news"), ("instance", "2")):
            element(By.ID, field).clear()
            element(By.ID, field).send_keys(value)
        Select(element(By.ID, "content-type")).select_by_visible_text("innerText")
        element(By.ID, "read").click()
        wait.until(lambda b: element(By.ID, "current").text == "Older news is kept for a year.")

        element(By.ID, "new-content").clear()
        element(By.ID, "new-content").send_keys("Older news is kept for two years.")
        element(By.ID, "replace").click()
        wait.until(lambda b: element(By.ID, "current").text == "Older news is kept for two years.")
        former, backup = element(By.ID, "former").text, element(By.ID, "backup").text
        message = element(By.ID, "message").text
        os.makedirs(os.path.dirname(os.path.abspath(args.screenshot)), exist_ok=True)
        browser.save_screenshot(args.screenshot)

        page, saved = ((site / name).read_bytes().decode() for name in ("news.htm", "news.bak"))
        checks = [
            (former == "Older news is kept for a year.", f"former text {former!r}"),
            (backup == "/news.bak", f"backup {backup!r}"),
            ("Replaced 1 part" in message, f"message {message!r}"),
            (page == PAGE.replace("a year", "two years"), f"page {page!r}"),
            (saved == PAGE, f"backup file {saved!r}"),
        ]

        # A failure shows the component's own text.
        element(By.ID, "element").clear()
        element(By.ID, "element").send_keys("#nothing")
        element(By.ID, "read").click()
        wait.until(lambda b: element(By.ID, "message").text.startswith("ERROR: "))

        # SIGTERM ends the server once it has answered and written its log.
        browser.quit()
        browser = None
        server.terminate()
        status = server.wait(timeout=10)
        log = server.stderr.read()
        checks += [(status == 0, f"exit status {status} after SIGTERM"),
                   (" POST /_tagwright/api/write 200 " in log, f"access log {log!r}")]
        failures = [what for ok, what in checks if not ok]
        for what in failures:
            print("FAILED:", what)
        return 1 if failures else 0
    finally:
        if browser:
            browser.quit()
        if server.poll() is None:
            server.terminate()
            server.wait(timeout=10)
        shutil.rmtree(work, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())
