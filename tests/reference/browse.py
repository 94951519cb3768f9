"""Uses the reference in a browser: searches and filters the registry's page and
compares what it shows with the library's records, follows a link to a record,
and takes pictures of four pages, narrow and wide, light and dark.

usage: browse.py HTML_FOLDER REGISTRY_RECORDS PICTURES_FOLDER
"""

import json
import pathlib
import subprocess
import sys

from selenium import webdriver
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import Select

# What is taken: a page, and what of it is to be seen.
PICTURES = {
    "front": ("index.html", "//h1"),
    "registry": ("registry.html", "//h1"),
    "function": ("namespacekorvan.html", "//h2[contains(., 'FindOIDInfo()')]"),
    "plot": ("performance_page.html", "//object"),
}


def start(scheme):
    options = webdriver.ChromeOptions()
    for argument in ("--headless=new", "--no-sandbox", "--disable-gpu",
                     "--hide-scrollbars", "--allow-file-access-from-files"):
        options.add_argument(argument)
    if scheme == "dark":
        options.add_argument("--blink-settings=preferredColorScheme=0")
    return webdriver.Chrome(options=options, service_log_path="/dev/null")


def shown(browser):
    """The records that the page shows: their groups and OIDs."""
    return [(int(row.get_attribute("data-group")),
             row.find_element(By.CLASS_NAME, "oid").text)
            for row in browser.find_elements(By.CSS_SELECTOR, "tbody tr")
            if row.is_displayed()]


def expect(what, found, wanted):
    if found != wanted:
        sys.exit(f"{what}: found {found}\n  instead of {wanted}")
    print(f"{what}: {len(found) if isinstance(found, list) else found}")


def use_registry(browser, page, records):
    browser.get(page)

    def wanted(condition):
        return [(record["group"], record["oid"]) for record in records
                if condition(record)]

    expect("all records", shown(browser), wanted(lambda record: True))
    text = browser.find_element(By.ID, "text")
    text.send_keys("GOST R 34.10")
    expect("a part of a name", shown(browser), wanted(
        lambda record: "gost r 34.10" in (record["name"] or "").lower() or
        "gost r 34.10" in ((record["cng"] or "") + ", " +
                           (record["cng_extra"] or "")).lower()))
    group = Select(browser.find_element(By.ID, "group"))
    group.select_by_value("3")
    expect("of one group", shown(browser), wanted(
        lambda record: record["group"] == 3 and "gost r 34.10" in (
            (record["name"] or "") + (record["cng"] or "")).lower()))
    count = browser.find_element(By.ID, "count").text
    expect("the count", count, f"{len(shown(browser))} of 259 records")
    text.clear()
    text.send_keys("0x2e23")
    expect("an ALG_ID", shown(browser), wanted(
        lambda record: record["group"] == 3 and record["algid"] == 0x2E23))
    text.clear()
    text.send_keys(" ")
    group.select_by_value("")
    browser.find_element(By.ID, "marked").click()
    expect("marked ones", shown(browser),
           wanted(lambda record: record["marked"]))
    browser.find_element(By.ID, "marked").click()
    browser.find_element(By.ID, "note").click()
    expect("those that no OID finds", shown(browser),
           wanted(lambda record: "OID" not in record["found_by"]))
    text.clear()
    text.send_keys("no such record")
    expect("none", shown(browser), [])

    browser.get(page + "?text=2.5.4.3#5-1")
    place = browser.execute_script(
        "return document.querySelector('tr:target .oid').textContent")
    first = next(record for record in records if record["group"] == 5)
    expect("a link to a record", place, first["oid"])
    expect("a search in the address", shown(browser),
           wanted(lambda record: "2.5.4.3" in record["oid"]))


def main():
    html, program, pictures = map(pathlib.Path, sys.argv[1:])
    records = json.loads(subprocess.run([program], check=True,
                                        capture_output=True).stdout)
    pictures.mkdir(parents=True, exist_ok=True)
    for scheme in ("light", "dark"):
        browser = start(scheme)
        try:
            if scheme == "light":
                use_registry(browser, (html / "registry.html").as_uri(),
                             records)
            for width in (400, 1400):
                browser.set_window_size(width, 1000)
                for name, (page, seen) in PICTURES.items():
                    browser.get((html / page).as_uri())
                    browser.execute_script(
                        "arguments[0].scrollIntoView()",
                        browser.find_element(By.XPATH, seen))
                    picture = pictures / f"{name}_{width}_{scheme}.png"
                    if not browser.save_screenshot(str(picture)):
                        sys.exit(f"no picture {picture}")
        finally:
            browser.quit()
    print(f"pictures are in {pictures}")


if __name__ == "__main__":
    main()
