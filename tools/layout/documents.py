"""Rules about documents: each is in an index, each link leads somewhere."""
import posixpath
import re

from layout.tree import Finding, folder_of, line_of, name_of

INDEXES = ("README.md", "docs/README.md", "docs/dev/README.md")
FENCE = re.compile(r"^(```|~~~).*?^\1[ \t]*$", re.MULTILINE | re.DOTALL)
INLINE_CODE = re.compile(r"`[^`\n]+`")
LINK = re.compile(r"\[(?:[^\]\[]|\[[^\]]*\])*\]\(\s*<?([^)\s>]+)>?(?:\s+\"[^\"]*\")?\s*\)")
NAMED_PATH = re.compile(
    r"(?<![\w./\\-])((?:benchmarks|cmake|daemonctl|docs|interface|packaging|sdk|src|tests|tools)"
    r"/[\w./-]*\w)(?![\w*<{\\])")
NAMED_SOURCE = re.compile(r"`([A-Z]\w+\.(?:cpp|h))`")
HEADING = re.compile(r"^#{1,6}[ \t]+(.+?)[ \t]*#*$", re.MULTILINE)
OUTSIDE_FOR_OPERATORS = {"CHANGELOG.md"}  # the package holds it beside docs


def blank(match):
    return re.sub(r"[^\n]", " ", match.group())


def anchors(text):
    """The anchors of a page's headings, as the usual renderers make them."""
    found = {}
    result = set()
    for match in HEADING.finditer(FENCE.sub(blank, text)):
        title = re.sub(r"\[([^\]]*)\]\([^)]*\)", r"\1", match.group(1)).lower()
        slug = re.sub(r"[^\w\- ]", "", title).replace(" ", "-")
        count = found.get(slug, 0)
        found[slug] = count + 1
        result.add(slug if count == 0 else f"{slug}-{count}")
    return result


def links(tree, page):
    """(line, path in the repository, anchor) of each link of a page that is no address."""
    text = INLINE_CODE.sub(blank, FENCE.sub(blank, tree.text(page)))
    for match in LINK.finditer(text):
        target, _, anchor = match.group(1).partition("#")
        if re.match(r"[a-z]+:", match.group(1)):
            continue
        path = posixpath.normpath(posixpath.join(folder_of(page), target)) if target else page
        yield line_of(text, match.start()), path, anchor


def named_paths(text):
    """(line, path) of each path or source file that a page names in code font."""
    for code in INLINE_CODE.finditer(FENCE.sub(blank, text)):
        for match in NAMED_PATH.finditer(code.group()):
            yield line_of(text, code.start()), match.group(1)
        source = NAMED_SOURCE.fullmatch(code.group())
        if source and not source.group(1).startswith("IDaemonMgrControl"):  # generated
            yield line_of(text, code.start()), source.group(1)


def pages(tree):
    return [path for path in tree.files if path.endswith(".md") and not path.startswith(".")]


def check_links(tree):
    """Every relative link leads to a file or folder, every anchor to a heading, and every path that a
    page names in code font exists. Dated pages may name what has been renamed since."""
    folders = {parent for path in tree.files for parent in parents(path)}
    names = {name_of(path) for path in tree.files}
    for page in pages(tree):
        if not folder_of(page).endswith("/results") and page != "CHANGELOG.md":
            for line, path in named_paths(tree.text(page)):
                if path not in tree.files and path not in folders and path not in names:
                    yield Finding("links", f"{page}:{line}", f"names {path}, which does not exist")
    for page in pages(tree):
        for line, path, anchor in links(tree, page):
            place = f"{page}:{line}"
            if path not in tree.files and path.rstrip("/") not in folders:
                yield Finding("links", place, f"there is no {path}")
            elif anchor and path.endswith(".md") and anchor not in anchors(tree.text(path)):
                yield Finding("links", place, f"{path} has no heading for #{anchor}")
            elif operators_page(page) and not in_package(path):
                yield Finding("links", place, f"the packages do not hold {path}")


def parents(path):
    while path := folder_of(path):
        yield path


def operators_page(page):
    return folder_of(page) == "docs"


def in_package(path):
    return path in OUTSIDE_FOR_OPERATORS or (
        path.startswith("docs/") and not path.startswith("docs/dev"))


def check_index(tree):
    """An index names every page; a page names every picture and table below docs."""
    named = {path: {target for _, target, _ in links(tree, path)} for path in pages(tree)}
    indexed = set().union(*(named.get(index, set()) for index in INDEXES))
    for page in pages(tree):
        if page not in indexed and page != "README.md":
            yield Finding("index", page, "none of " + ", ".join(INDEXES) + " names it")
        elif (operators_page(page) and page != "docs/README.md"
                and page not in named.get("docs/README.md", ())):
            yield Finding("index", page, "docs/README.md does not name it")
    used = set().union(*named.values()) if named else set()
    for path in tree.below("docs"):
        if not path.endswith(".md") and path not in used:
            yield Finding("index", path, "no page names it")
