#!/usr/bin/env python3
"""Opens every page of a site in headless Chromium and says what is wrong with it.

    site.py SITE FOLDER     the site's folder of HTML files; screenshots and a summary go to FOLDER
    site.py --self-test FOLDER   makes a small site with one fault of each kind and expects to be told

Of each page: no error or warning on the console, no dead link, be it to a file, to a place in a page or to
a picture, counted after the page's scripts have run; on a telephone nothing scrolls sideways; text is
large enough and not squeezed into a column of letters; in light, on the telephone, and in dark, on a desk, every text
stands out from its background.
"""

import json
import os
import sys
import tempfile
from pathlib import Path
from urllib.parse import unquote, urldefrag, urlparse

from selenium import webdriver
from selenium.webdriver.chrome.service import Service

PHONE = (390, 844)
DESK = (1280, 900)
SMALLEST_TEXT = 12      # pixels
CONTRAST = 4.5          # WCAG 2, level AA
CONTRAST_LARGE = 3.0    # from 24 pixels on, or 18.66 in bold

# What a page is asked once it has been loaded.
LOOK = """
const all = selector => [...document.querySelectorAll(selector)];
const width = arguments[0], wide = [];  // innerWidth grows with what is too wide
if (document.documentElement.scrollWidth > width || document.body.scrollWidth > width) {
  for (const e of all('body *')) {
    const box = e.getBoundingClientRect();
    if (box.right + scrollX > width + 1) { wide.push(e.tagName + '.' + e.className); if (wide.length > 2) break; }
  }
}
return {
  title: document.title,
  width: Math.max(document.documentElement.scrollWidth, document.body.scrollWidth, innerWidth),
  wide: wide,
  links: all('a[href], area[href]').map(a => a.href && a.href.baseVal !== undefined ? a.href.baseVal : a.href),
  loads: all('img[src]').map(e => e.src).concat(all('script[src]').map(e => e.src),
    all('link[rel=stylesheet][href]').map(e => e.href), all('object[data]').map(e => e.data)),
  broken: all('img').filter(e => e.complete && e.naturalWidth === 0).map(e => e.src),
  places: all('[id]').map(e => e.id).concat(all('a[name]').map(e => e.name)),
};
"""

# Every text that can be seen, with the colours that it has and stands on; the worst of each kind.
COLOURS = """
const parse = c => { const n = c.match(/[0-9.]+/g).map(Number); return n.length < 4 ? [...n, 1] : n; };
const linear = v => v / 255 <= 0.03928 ? v / 255 / 12.92 : ((v / 255 + 0.055) / 1.055) ** 2.4;
const light = c => 0.2126 * linear(c[0]) + 0.7152 * linear(c[1]) + 0.0722 * linear(c[2]);
const over = (top, under) => [0, 1, 2].map(i => top[i] * top[3] + under[i] * (1 - top[3])).concat(1);
const dark = matchMedia('(prefers-color-scheme: dark)').matches;
const scheme = getComputedStyle(document.documentElement).colorScheme;
const canvas = dark && /dark/.test(scheme) ? [18, 18, 18, 1] : [255, 255, 255, 1];
const ground = element => {
  const layers = [];
  for (let e = element; e; e = e.parentElement) {
    const style = getComputedStyle(e);
    if (style.backgroundImage !== 'none' && parse(style.backgroundColor)[3] < 1) return null;  // cannot be told
    layers.push(parse(style.backgroundColor));
    if (layers[layers.length - 1][3] === 1) break;
  }
  return layers.reverse().reduce((under, top) => over(top, under), canvas);
};
const seen = new Map();
let smallest = 1000, small = '', squeezed = '';
const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
while (walker.nextNode()) {
  const text = walker.currentNode.data.trim(), e = walker.currentNode.parentElement;
  if (!text || ['SCRIPT', 'STYLE', 'NOSCRIPT', 'OPTION'].includes(e.tagName)) continue;
  if (!e.checkVisibility({checkOpacity: true, checkVisibilityCSS: true}) || !e.getClientRects().length) continue;
  const style = getComputedStyle(e), size = parseFloat(style.fontSize), back = ground(e);
  if (text.length > 1 && !['SUP', 'SUB'].includes(e.tagName) && size < smallest) {
    smallest = size;
    small = text.slice(0, 30);
  }
  if (text.length >= 4) {
    const range = document.createRange();
    range.selectNodeContents(walker.currentNode);
    const lines = new Set([...range.getClientRects()].map(r => Math.round(r.top))).size;
    if (lines > 2 && lines > text.length / 2.5) squeezed = text.slice(0, 30);
  }
  if (back === null) continue;
  const a = light(over(parse(style.color), back)), b = light(back);
  const ratio = (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05);
  const large = size >= 24 || (size >= 18.66 && Number(style.fontWeight) >= 700);
  const on = ' on rgb(' + back.slice(0, 3).map(Math.round) + ')';
  const key = e.tagName + '.' + e.className + ' ' + style.color + on;
  if (!seen.has(key)) seen.set(key, {key: key, text: text.slice(0, 30), ratio: ratio, large: large});
}
const page = light(ground(document.body) || canvas);
return {texts: [...seen.values()], smallest: smallest, small: small, squeezed: squeezed, page: page};
"""


class Browser:
    def __init__(self, profile):
        options = webdriver.ChromeOptions()
        options.binary_location = "/usr/bin/chromium"
        for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                         "--hide-scrollbars", "--allow-file-access-from-files", f"--user-data-dir={profile}"):
            options.add_argument(argument)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        self.driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)

    def close(self):
        self.driver.quit()

    def size(self, size, phone):
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": size[0], "height": size[1], "deviceScaleFactor": 1, "mobile": phone})

    def scheme(self, scheme):
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {
            "features": [{"name": "prefers-color-scheme", "value": scheme}]})

    def open(self, page):
        self.driver.get(page.as_uri())

    def look(self, width):
        return self.driver.execute_script(LOOK, width)

    def colours(self):
        return self.driver.execute_script(COLOURS)

    def console(self):
        return [entry["message"] for entry in self.driver.get_log("browser") if entry["level"] in ("SEVERE", "WARNING")]

    def shoot(self, path):
        self.driver.save_screenshot(str(path))


def file_of(url):
    """The file that a URL names, and the place in it; None for what is elsewhere."""
    plain, place = urldefrag(url)
    parts = urlparse(plain)
    return (Path(unquote(parts.path)), unquote(place)) if parts.scheme == "file" else None


def check(site, folder):
    """Returns the complaints, a line each, and the counts."""
    complaints = []
    pages = sorted(site.rglob("*.html"))
    places, links, loads, count = {}, {}, {}, {"pages": len(pages), "links": 0, "elsewhere": 0, "texts": 0}
    with tempfile.TemporaryDirectory() as profile:
        browser = Browser(profile)
        try:
            for page in pages:
                name = str(page.relative_to(site))
                complain = lambda text: complaints.append(f"{name}: {text}")
                browser.size(PHONE, True)
                browser.scheme("light")
                browser.open(page)
                found = browser.look(PHONE[0])
                places[page.resolve()] = set(found["places"])
                links[page], loads[page] = found["links"], found["loads"]
                if found["width"] > PHONE[0]:
                    complain(f"is {found['width']} pixels wide on a telephone: {', '.join(found['wide'])}")
                if not found["title"].strip():
                    complain("has no title")
                for picture in found["broken"]:
                    complain(f"the picture {picture} is broken")
                for scheme, size, where in (("light", PHONE, "a telephone"), ("dark", DESK, "a desk")):
                    browser.size(size, size == PHONE)
                    browser.scheme(scheme)
                    colours = browser.colours()
                    count["texts"] += len(colours["texts"])
                    if (colours["page"] > 0.5) != (scheme == "light"):
                        complain(f"is not {scheme} when {scheme} is asked for")
                    for text in colours["texts"]:
                        if text["ratio"] < (CONTRAST_LARGE if text["large"] else CONTRAST):
                            complain(f"in {scheme}, contrast {text['ratio']:.2f}: {text['key']}: {text['text']!r}")
                    if colours["smallest"] < SMALLEST_TEXT:
                        complain(f"has text of {colours['smallest']} pixels on {where}: {colours['small']!r}")
                    if colours["squeezed"]:
                        complain(f"squeezes text on {where}: {colours['squeezed']!r}")
                for message in browser.console():
                    complain(f"console: {message}")
            for page in pages:
                name = str(page.relative_to(site))
                for url in links[page] + loads[page]:
                    target = file_of(url)
                    if target is None:
                        count["elsewhere"] += url.startswith("http")
                        continue
                    count["links"] += 1
                    file, place = target
                    if file.is_dir():
                        file = file / "index.html"
                    try:
                        file.resolve().relative_to(site.resolve())
                    except ValueError:
                        complaints.append(f"{name}: {url} leads out of the site")
                        continue
                    if not file.exists():
                        complaints.append(f"{name}: there is no {url}")
                    elif place and file.resolve() in places and place not in places[file.resolve()]:
                        complaints.append(f"{name}: {url} is no place in that page")
            for page in shown(pages, site):
                for label, size in (("telephone", PHONE), ("desk", DESK)):
                    for scheme in ("light", "dark"):
                        browser.size(size, label == "telephone")
                        browser.scheme(scheme)
                        browser.open(page)
                        browser.shoot(folder / f"{page.stem}-{label}-{scheme}.png")
        finally:
            browser.close()
    return complaints, count


def shown(pages, site):
    """The pages whose screenshots are kept: the first, some guides, some of the reference."""
    wanted = ("index", "strings", "messages", "weaknesses", "collections", "TBstr", "KestPostMessage", "KestInitialize")
    chosen = []
    for word in wanted:
        fitting = [page for page in pages if word.lower() in page.stem.replace("_", "").lower()]
        if fitting:
            chosen.append(min(fitting, key=lambda page: (len(page.stem), page.stem)))
    return chosen or pages[:1]


HEAD = '<!DOCTYPE html><html><head><meta charset="utf-8"><meta name="viewport" content="width=device-width">' \
    '<title>{0}</title><style>html{{color-scheme:light dark}}{1}</style></head><body><p>Some text.</p>{2}</body></html>'
FAULTS = {  # the page's style and body, and a part of what is to be said of it
    "good": ("", '<a href="good.html#here" id="here">here</a>', None),
    "dead-file": ("", '<a href="nowhere.html">x</a>', "there is no"),
    "dead-place": ("", '<a href="good.html#there">x</a>', "is no place"),
    "dead-picture": ("", '<img src="none.png" alt="x">', "is broken"),
    "outside": ("", '<a href="../../etc">x</a>', "leads out of the site"),
    "late-link": ("", '<script>document.body.innerHTML += "<a href=\'late.html\'>x</a>"</script>', "late.html"),
    "console": ("", "<script>undefinedFunction()</script>", "console:"),
    "wide": ("", '<div style="width:500px">x</div>', "pixels wide"),
    "small": ("p{font-size:8px}", "", "text of 8"),
    "squeezed": ("", '<div style="width:10px;overflow-wrap:anywhere">squeezed</div>', "squeezes"),
    "faint": ("p{color:#ddd}", "", "contrast"),
    "faint-in-dark": ("@media(prefers-color-scheme:dark){p{color:#333}}", "", "in dark, contrast"),
    "only-light": ("html{background:#fff}body{background:#fff}", "", "is not dark"),
}


def self_test(folder):
    site = folder / "self-test"
    site.mkdir(parents=True, exist_ok=True)
    for name, (style, body, _) in FAULTS.items():
        (site / f"{name}.html").write_text(HEAD.format(name, style, body), encoding="utf-8")
    complaints, _ = check(site, site)
    failed = 0
    for name, (_, _, wanted) in FAULTS.items():
        said = [text for text in complaints if text.startswith(f"{name}.html: ")]
        if wanted is None and said or wanted is not None and not any(wanted in text for text in said):
            print(f"{name}: said {said}, wanted {wanted!r}")
            failed = 1
    return failed


def main(arguments):
    if len(arguments) == 2 and arguments[0] == "--self-test":
        return self_test(Path(arguments[1]).resolve())
    if len(arguments) != 2:
        print(__doc__.strip(), file=sys.stderr)
        return 2
    site, folder = Path(arguments[0]).resolve(), Path(arguments[1]).resolve()
    folder.mkdir(parents=True, exist_ok=True)
    complaints, count = check(site, folder)
    count["complaints"] = len(complaints)
    (folder / "summary.json").write_text(json.dumps(count, indent=1) + "\n", encoding="utf-8")
    print("\n".join(complaints))
    print(f"{count['pages']} pages, {count['links']} links within, {count['elsewhere']} out, "
          f"{count['texts']} kinds of text, {len(complaints)} complaints")
    return 1 if complaints or count["pages"] < 30 else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
