#!/usr/bin/env python3
"""Makes the README's pictures of the two kinds of picture search from the
calculator rendered by docs/screen/make.sh:

  equals.png        the "=" key cut from the calculator, as a script would save it
  equals-hover.png  the same key with its face 8 steps brighter in each colour, as
                    under the pointer
  walk.png          what IsImageInArea compares from the key: green where the
                    sub-image lies, red where the walk runs on to the area's far corner
  locate.png        what LocateImage compares: the key alone, framed

usage: pictures.py CALCULATOR.png FOLDER
"""
import struct
import sys
import zlib

KEY = (200, 208, 64, 28)  # x, y, width, height of the "=" key


def read_png(path):
    """8-bit RGB or RGBA, not interlaced: rows of (r, g, b)."""
    data = open(path, "rb").read()
    pos, packed = 8, b""
    while pos < len(data):
        length, kind = struct.unpack(">I4s", data[pos:pos + 8])
        body = data[pos + 8:pos + 8 + length]
        pos += 12 + length
        if kind == b"IHDR":
            width, height, depth, colour = struct.unpack(">IIBB", body[:10])
            assert depth == 8 and colour in (2, 6), "8-bit RGB or RGBA only"
        elif kind == b"IDAT":
            packed += body
    step = 3 if colour == 2 else 4
    raw, stride, rows, previous = zlib.decompress(packed), width * step, [], bytearray(width * step)
    for y in range(height):
        kind, line = raw[y * (stride + 1)], bytearray(raw[y * (stride + 1) + 1:(y + 1) * (stride + 1)])
        for i in range(stride):
            left = line[i - step] if i >= step else 0
            up, corner = previous[i], previous[i - step] if i >= step else 0
            if kind == 1:
                line[i] = (line[i] + left) & 255
            elif kind == 2:
                line[i] = (line[i] + up) & 255
            elif kind == 3:
                line[i] = (line[i] + (left + up) // 2) & 255
            elif kind == 4:
                p = left + up - corner
                pa, pb, pc = abs(p - left), abs(p - up), abs(p - corner)
                line[i] = (line[i] + (left if pa <= pb and pa <= pc else up if pb <= pc else corner)) & 255
        rows.append([tuple(line[x * step:x * step + 3]) for x in range(width)])
        previous = line
    return rows


def write_png(path, rows):
    raw = b"".join(b"\0" + bytes(v for pixel in row for v in pixel) for row in rows)

    def chunk(kind, body):
        return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))

    header = struct.pack(">IIBBBBB", len(rows[0]), len(rows), 8, 2, 0, 0, 0)
    with open(path, "wb") as f:
        f.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(raw, 9))
                + chunk(b"IEND", b""))


def tint(rows, x1, y1, x2, y2, colour, amount):
    for y in range(y1, y2 + 1):
        for x in range(x1, x2 + 1):
            rows[y][x] = tuple(round(v * (1 - amount) + c * amount) for v, c in zip(rows[y][x], colour))


def frame(rows, x1, y1, x2, y2, colour):
    for x in range(x1 - 1, x2 + 2):
        rows[y1 - 1][x] = rows[y2 + 1][x] = colour
    for y in range(y1 - 1, y2 + 2):
        rows[y][x1 - 1] = rows[y][x2 + 1] = colour


def main():
    screen, folder = read_png(sys.argv[1]), sys.argv[2]
    x, y, w, h = KEY
    key = [row[x:x + w] for row in screen[y:y + h]]
    write_png(f"{folder}/equals.png", key)
    lit = [[tuple(min(255, v + 8) for v in p) if p == (200, 200, 200) else p for p in row] for row in key]
    write_png(f"{folder}/equals-hover.png", lit)

    # IsImageInArea over the whole screen: from the candidate, where the
    # sub-image's pixel (1,1) lies, to the far corner.
    walk = [list(row) for row in screen]
    right, bottom = len(screen[0]) - 1, len(screen) - 1
    tint(walk, x + 1, y + 1, right, bottom, (230, 40, 40), 0.45)
    tint(walk, x + 1, y + 1, x + w - 1, y + h - 1, (40, 200, 60), 0.45)
    frame(walk, x + 1, y + 1, x + w - 1, y + h - 1, (40, 200, 60))
    write_png(f"{folder}/walk.png", walk)

    located = [list(row) for row in screen]
    frame(located, x, y, x + w - 1, y + h - 1, (40, 200, 60))
    write_png(f"{folder}/locate.png", located)


if __name__ == "__main__":
    main()
