#!/usr/bin/env python3
"""Draws what a terminal shows, as `tmux capture-pane -e -p -N` prints it on standard input, as SVG on standard output.

usage: terminal_svg.py COLUMNS ROWS TITLE

Knows the attributes bold, dim and reverse and the sixteen colours. Block elements are drawn as rectangles, which meet
in every font; all other text has its width stated, so that columns stay columns.
"""

import itertools
import re
import sys
from collections import namedtuple
from xml.sax.saxutils import escape

CELL_WIDTH, CELL_HEIGHT, BASELINE, FONT_SIZE = 8.43, 18, 13, 14
MARGIN, BAR = 12, 28  # around the text; the window's title bar, px
PAPER, INK, FRAME, BAR_PAPER, BAR_INK = "#16181d", "#d6d9de", "#3a3f4b", "#22252c", "#9aa1ad"
PALETTE = ["#3a3f4b", "#f0717b", "#7fd17f", "#e5c07b", "#6cb0f5", "#c792ea", "#56c8d8", "#d6d9de",
           "#6b7280", "#ff8f98", "#a0e8a0", "#ffd88f", "#95c9ff", "#dcb0ff", "#82e3f0", "#ffffff"]
BLOCKS = "▁▂▃▄▅▆▇█"

Style = namedtuple("Style", "bold dim reverse ink paper", defaults=(False, False, False, None, None))
CHANGES = {1: {"bold": True}, 2: {"dim": True}, 7: {"reverse": True}, 22: {"bold": False, "dim": False},
           27: {"reverse": False}, 39: {"ink": None}, 49: {"paper": None}}
for number in range(8):
    CHANGES[30 + number] = {"ink": PALETTE[number]}
    CHANGES[40 + number] = {"paper": PALETTE[number]}
    CHANGES[90 + number] = {"ink": PALETTE[8 + number]}
    CHANGES[100 + number] = {"paper": PALETTE[8 + number]}


def restyled(style, codes):
    """The style after the sequence with these codes. A code that is not known ends the run."""
    for code in codes:
        style = style._replace(**CHANGES[code]) if code else Style()
    return style


def cells(lines, columns):
    """For each line its characters, each with its style. A style goes on into the next line."""
    style = Style()
    for line in lines:
        row = []
        for sequence, character in re.findall(r"\x1b\[([0-9;]*)m|(.)", line):
            if character:
                row.append((character, style))
            else:
                style = restyled(style, [int(code or 0) for code in sequence.split(";")])
        yield row[:columns]


def number(value):
    return f"{value:.2f}".rstrip("0").rstrip(".")


def rectangle(x, y, width, height):
    return f"M{number(x)} {number(y)}h{number(width)}v{number(height)}h{number(-width)}z"


def blocks(text, x, y):
    """The block elements of a text as one path."""
    heights = [(BLOCKS.index(c) + 1) * CELL_HEIGHT * 0.8 / 8 for c in text]
    return "".join(rectangle(x + i * CELL_WIDTH, y + CELL_HEIGHT - 2 - height, CELL_WIDTH - 0.9, height)
                   for i, height in enumerate(heights))


def draw_run(text, style, x, y):
    """A run of characters of one style, all of them block elements or none."""
    ink, paper = style.ink or INK, style.paper or PAPER
    if style.reverse:
        ink, paper = paper, ink
    width = len(text) * CELL_WIDTH
    if paper != PAPER:
        yield f'<path fill="{paper}" d="{rectangle(x, y, width, CELL_HEIGHT)}"/>'
    faint = ' opacity="0.6"' if style.dim else ""
    if text[0] in BLOCKS:
        yield f'<path fill="{ink}"{faint} d="{blocks(text, x, y)}"/>'
        return
    bold = ' font-weight="bold"' if style.bold else ""
    for words in re.finditer(r"\S+( \S+)*", text):
        left, length = x + words.start() * CELL_WIDTH, len(words[0]) * CELL_WIDTH
        yield (f'<text x="{number(left)}" y="{number(y + BASELINE)}" textLength="{number(length)}"'
               f' fill="{ink}"{bold}{faint}>{escape(words[0])}</text>')


def draw_row(row, y):
    x = MARGIN
    for (style, _), run in itertools.groupby(row, lambda cell: (cell[1], cell[0] in BLOCKS)):
        text = "".join(character for character, _ in run)
        yield from draw_run(text, style, x, y)
        x += len(text) * CELL_WIDTH


def draw(lines, columns, rows, title):
    width, height = columns * CELL_WIDTH + 2 * MARGIN, BAR + rows * CELL_HEIGHT + 2 * MARGIN
    yield (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {number(width)} {number(height)}"'
           f' width="{number(width)}" height="{number(height)}" xml:space="preserve" font-size="{FONT_SIZE}"'
           ' font-family="\'DejaVu Sans Mono\', \'Noto Sans Mono\', Menlo, Consolas, monospace">')
    yield f"<title>{escape(title)}</title>"
    yield (f'<rect x="0.5" y="0.5" width="{number(width - 1)}" height="{number(height - 1)}" rx="8"'
           f' fill="{PAPER}" stroke="{FRAME}"/>')
    yield f'<path fill="{BAR_PAPER}" d="M1 {BAR}V8a7 7 0 0 1 7-7h{number(width - 16)}a7 7 0 0 1 7 7v{BAR - 8}z"/>'
    yield (f'<text x="{number(width / 2)}" y="{BAR - 9}" text-anchor="middle" font-size="{FONT_SIZE - 2}"'
           f' fill="{BAR_INK}">{escape(title)}</text>')
    for index, row in enumerate(cells(lines[:rows], columns)):
        yield from draw_row(row, BAR + MARGIN + index * CELL_HEIGHT)
    yield "</svg>"


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__.strip())
    captured = sys.stdin.read().split("\n")
    print("\n".join(draw(captured, int(sys.argv[1]), int(sys.argv[2]), sys.argv[3])))
