"""A headless browser for tests of the pages."""
import sys

try:
    from selenium import webdriver
    from selenium.common.exceptions import WebDriverException
    from selenium.webdriver.chrome.service import Service
except ImportError:
    webdriver = None

SKIPPED = 77
CHROMIUM = "/usr/bin/chromium"
DRIVER = "/usr/bin/chromedriver"


def start(width=1400, height=1100):
    """A browser, or the end of the test program with the reason why there is none."""
    if webdriver is None:
        skip("python3-selenium is not installed")
    options = webdriver.ChromeOptions()
    options.binary_location = CHROMIUM
    for option in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--hide-scrollbars",
                   f"--window-size={width},{height}"):
        options.add_argument(option)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    try:
        return webdriver.Chrome(options=options, service=Service(DRIVER))
    except WebDriverException as error:
        skip(f"chromium and chromium-driver are not installed, or do not start: {error.msg}")


def skip(reason):
    print(f"Skipped: {reason}", file=sys.stderr)
    sys.exit(SKIPPED)
