# SPDX-License-Identifier: MIT
"""Converts the chapters of the manual into one self-contained HTML file.

usage: make_manual.py VERSION OUT CHAPTER.md...

Links between chapters become links within the page. Missing pictures and links to files that are not
chapters are errors.
"""
import base64
import html
import pathlib
import re
import subprocess
import sys

MIME_TYPES = {".jpg": "image/jpeg", ".png": "image/png"}
HERE = pathlib.Path(__file__).parent


def slug(text):
    return "-".join(re.findall(r"\w+", html.unescape(re.sub("<.*?>", "", text)).lower()))


def inlined(source, chapter):
    """The picture as a data URL."""
    picture = chapter.parent / source
    if not picture.is_file():
        sys.exit(f"{chapter}: the picture {source} is missing")
    return f"data:{MIME_TYPES[picture.suffix]};base64,{base64.b64encode(picture.read_bytes()).decode()}"


def link_target(target, chapter, chapters):
    if target.startswith(("https://", "#")):
        return target
    path, _, section = target.partition("#")
    linked = (chapter.parent / path).resolve()
    if linked not in chapters:
        sys.exit(f"{chapter}: {target} is not a chapter of the manual")
    return f"#{linked.stem}" + (f"-{section}" if section else "")


def rendered(chapter, chapters, contents):
    command = ["cmark-gfm", "--extension", "table", "--smart", chapter]
    body = subprocess.run(command, check=True, capture_output=True, text=True).stdout

    def heading(match):
        level, text = match.groups()
        name = chapter.stem if level == "1" else f"{chapter.stem}-{slug(text)}"
        if level in "12":
            kind = "chapter" if level == "1" else "section"
            contents.append(f'<p class="{kind}"><a href="#{name}">{text}</a></p>')
        return f'<h{level} id="{name}">{text}</h{level}>'

    body = re.sub(r"<h(\d)>(.*?)</h\1>", heading, body)
    embed = lambda match: match[1] + inlined(html.unescape(match[2]), chapter) + match[3]
    link = lambda match: match[1] + link_target(match[2], chapter, chapters) + match[3]
    body = re.sub(r'(<img src=")(.*?)(")', embed, body)
    return re.sub(r'(<a href=")(.*?)(")', link, body)


def main(version, out, *names):
    chapters = [pathlib.Path(name).resolve() for name in names]
    contents = []
    bodies = [rendered(chapter, chapters, contents) for chapter in chapters]
    targets = re.findall('href="#(.*?)"', "".join(bodies))
    missing = [target for target in targets if f'id="{target}"' not in "".join(bodies)]
    if missing:
        sys.exit(f"no such section: {', '.join(missing)}")
    pathlib.Path(out).write_text(
        f"""<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>Percussomatic {version}: the manual</title>
<style>
{(HERE / "manual.css").read_text()}</style>
</head>
<body>
<nav>
{chr(10).join(contents)}
</nav>
{"".join(bodies)}<footer>Percussomatic {version}</footer>
</body>
</html>
""",
        encoding="utf-8",
    )


if __name__ == "__main__":
    main(*sys.argv[1:])
