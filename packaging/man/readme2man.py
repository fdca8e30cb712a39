#!/usr/bin/env python3
"""Writes the manual page tarvoke(5), the script language, from the sections
of README.md that describe it, so that the page and the README never differ.

usage: readme2man.py README.md OUTPUT VERSION

Understands the Markdown the README uses: headings, paragraphs, bullet lists,
code blocks, tables (each row becomes a tagged paragraph), `code`, **bold**
and [links](...).
"""
import re
import sys

SECTIONS = ["The script language", "Host commands"]

HEADER = r""".TH TARVOKE 5 "" "Tarvoke {version}" "File Formats"
.SH NAME
tarvoke \- the script language of Tarvoke (.tk files)
.SH DESCRIPTION
Tarvoke scripts are plain text files, usually named
.IR *.tk ,
written by hand or recorded, and played by
.BR tarvoke (1)
and
.BR tarvoke\-play (1).
This page describes the language.
"""

FOOTER = r""".SH SEE ALSO
.BR tarvoke\-play (1)
"""


def escape(text):
    """Plain text to roff: backslashes, and hyphens kept as hyphens."""
    return text.replace("\\", "\\e")


def inline(text):
    """One line of Markdown text to roff, with its code spans in bold."""
    out = []
    pos = 0
    for match in re.finditer(r"(`+)(.+?)\1|\*\*(.+?)\*\*|\[([^\]]+)\]\([^)]*\)", text):
        out.append(escape(text[pos:match.start()]))
        if match.group(1):
            code = match.group(2)
            if len(match.group(1)) > 1:
                code = code.strip()
            out.append("\\fB" + escape(code).replace("-", "\\-") + "\\fR")
        elif match.group(3):
            out.append("\\fB" + inline(match.group(3)) + "\\fR")
        else:
            out.append(inline(match.group(4)))
        pos = match.end()
    out.append(escape(text[pos:]))
    return "".join(out)


def line(text):
    """A text line that roff must not take for a request."""
    text = text.strip()
    return "\\&" + text if text[:1] in (".", "'") else text


def cells(row):
    row = row.strip()
    if row.startswith("|"):
        row = row[1:]
    if row.endswith("|"):
        row = row[:-1]
    return [cell.strip() for cell in re.split(r"(?<!\\)\|", row)]


def convert(lines):
    out = []
    i = 0
    while i < len(lines):
        text = lines[i]
        if text.startswith("```"):
            i += 1
            out += [".PP", ".RS", ".EX"]
            while i < len(lines) and not lines[i].startswith("```"):
                code = escape(lines[i].rstrip())
                out.append("\\&" + code if code[:1] in (".", "'") else code)
                i += 1
            out += [".EE", ".RE"]
            i += 1
        elif text.startswith("### "):
            out.append(".SS " + inline(text[4:]))
            i += 1
        elif text.startswith("## "):
            out.append(".SH " + inline(text[3:]).upper())
            i += 1
        elif text.startswith("|"):
            header = cells(text)
            i += 2  # the header and its rule
            while i < len(lines) and lines[i].startswith("|"):
                row = cells(lines[i])
                out += [".TP", line(inline(row[0]))]
                for name, cell in zip(header[1:], row[1:]):
                    if cell:
                        out.append(line((inline(name) + ": " if name else "") + inline(cell)))
                        out.append(".br")
                if out[-1] == ".br":
                    out.pop()
                i += 1
            out.append(".PP")
        elif text.startswith("- "):
            item = [text[2:]]
            i += 1
            while i < len(lines) and lines[i].startswith("  ") and lines[i].strip():
                item.append(lines[i].strip())
                i += 1
            out += [".IP \\(bu 2", line(inline(" ".join(item)))]
        elif not text.strip():
            i += 1
        else:
            paragraph = []
            while i < len(lines) and lines[i].strip() and not re.match(r"(```|#|\||- )", lines[i]):
                paragraph.append(lines[i].strip())
                i += 1
            out += [".PP", line(inline(" ".join(paragraph)))]
    return out


def main():
    readme, output, version = sys.argv[1:4]
    text = open(readme, encoding="utf-8").read().split("\n")
    body = []
    for title in SECTIONS:
        start = text.index("## " + title)
        end = next((n for n in range(start + 1, len(text)) if text[n].startswith("## ")), len(text))
        body += convert(text[start:end])
    with open(output, "w", encoding="utf-8") as page:
        page.write(HEADER.format(version=version) + "\n".join(body) + "\n" + FOOTER)


if __name__ == "__main__":
    main()
