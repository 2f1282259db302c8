#!/usr/bin/env python3
"""Writes the character set tables of subtitle/charset from the codecs of Python's standard library.

  gen_charsets.py           rewrites the generated files in place
  gen_charsets.py --check   compares them with what would be written; exit status 1 when they differ

Every table's count, order, first and last rows are asserted before anything is written.
"""

import argparse
import pathlib
import sys

TABLES = pathlib.Path(__file__).resolve().parent.parent / "subtitle" / "charset"

DOUBLE_BYTE_CODES = [lead << 8 | trail for lead in range(0x81, 0xFF) for trail in range(0x40, 0xFF)]

# The edition of 2000 keeps these 25 codes in the Private Use Area; later editions moved them to characters that
# Unicode got afterwards. Set here, so that the tables do not hang on the edition that a Python release follows.
GB18030_2000 = {
    **{0xA6D9 + i: 0xE78D + i for i in range(7)},
    0xA6EC: 0xE794, 0xA6ED: 0xE795, 0xA6F3: 0xE796, 0xA8BC: 0xE7C7,
    **{code: 0xE816 + (code - 0xFE51) for code in (0xFE51, 0xFE52, 0xFE53, 0xFE59, 0xFE61, 0xFE66, 0xFE67, 0xFE6C,
                                                   0xFE6D, 0xFE76, 0xFE7E)},
    0xFE90: 0xE854, 0xFE91: 0xE855, 0xFEA0: 0xE864,
}


def decode(raw, codec):
    """The one character that `raw` stands for, or None: no character, several, or one beyond 16 bits."""
    try:
        text = raw.decode(codec)
    except UnicodeDecodeError:
        return None
    return ord(text) if len(text) == 1 and ord(text) <= 0xFFFF else None


def double_byte(codec, skip=lambda code: False):
    """All double-byte codes that `codec` assigns, with their characters."""
    table = {}
    for code in DOUBLE_BYTE_CODES:
        character = None if skip(code) else decode(code.to_bytes(2, "big"), codec)
        if character is not None:
            table[code] = character
    return table


def single_byte(codec, first):
    table = {code: decode(bytes([code]), codec) for code in range(first, 0x100)}
    return {code: character for code, character in table.items() if character is not None}


def ranges(codes):
    """The runs of `codes`; no run goes over the end of a lead byte's row."""
    runs = []
    for code in sorted(codes):
        if runs and code == runs[-1][1] + 1 and code >> 8 == runs[-1][1] >> 8:
            runs[-1][1] = code
        else:
            runs.append([code, code])
    return [tuple(run) for run in runs]


def shift_jis_ranges():
    return ranges(double_byte("cp932", skip=lambda code: 0xF0 <= code >> 8 <= 0xF9))  # without the user's rows


def gbk_ranges():
    return ranges(double_byte("cp936"))


def big5_ranges():
    return ranges(double_byte("cp950", skip=lambda code: 0xC6A1 <= code <= 0xC8FE))  # without the user's block


def gb_to_unicode():
    table = double_byte("gb18030")
    for code in GB18030_2000:
        table[code] = GB18030_2000[code]
    return sorted(table.items())


def big5_to_unicode():
    table = double_byte("big5")
    desktop = double_byte("cp950")
    differing = [code for code in table if desktop.get(code, table[code]) != table[code]]
    assert differing == [0xA145, 0xA14E, 0xA1C2, 0xA1E3, 0xA1F2, 0xA1F3, 0xA241, 0xA242, 0xA244, 0xA246, 0xA247]
    return sorted((code, desktop.get(code, character)) for code, character in table.items())


def farsi_to_unicode():
    return sorted(single_byte("cp1256", 0x80).items())


def spanish_to_unicode():
    return sorted(single_byte("cp1252", 0x80).items())


def hebrew_to_unicode():
    return sorted(single_byte("iso8859_8", 0xAA).items())


def checked(rows, count, first, last, holds=(), covered=None):
    """`rows`, after a look at everything that is known about them."""
    assert len(rows) == count, f"{len(rows)} rows, not {count}"
    assert rows[:len(first)] == first, rows[:len(first)]
    assert rows[-1] == last, rows[-1]
    assert all(left[0] < right[0] for left, right in zip(rows, rows[1:])), "not ascending"
    assert set(holds) <= set(rows), set(holds) - set(rows)
    if covered is not None:
        assert [row[0] for row in rows] == covered, "other codes"
    return rows


def checked_ranges(rows, count, codes, first, last, holds=()):
    assert all(low <= high and low >> 8 == high >> 8 for low, high in rows)
    assert all(left[1] < right[0] for left, right in zip(rows, rows[1:])), "ranges overlap"
    assert sum(high - low + 1 for low, high in rows) == codes
    return checked(rows, count, first, last, holds)


def array(record, name, rows, digits, per_line, group):
    """A definition; each value of code >> `group` begins a line."""
    lines = []
    previous = None
    for row in rows:
        if previous != row[0] >> group or len(lines[-1]) == per_line:
            lines.append([])
        previous = row[0] >> group
        lines[-1].append("{0x%0*X, 0x%04X}" % (digits, row[0], row[1]))
    body = "".join("    " + ", ".join(line) + ",\n" for line in lines)
    return f"constexpr {record} {name}[] = {{\n{body}}};\n"


def source(title, arrays):
    """A generated file: `arrays` are (checked definition, name)."""
    text = f"/// {title}\n/// Written by tools/gen_charsets.py: change that, not this file.\n"
    text += '#include "subtitle/charset/CharsetTables.h"\n\n// clang-format off\n\nnamespace android {\n\n'
    for definition, name in arrays:
        text += definition + f"static_assert(vxsubtitle::inOrder({name}), \"sorted by code\");\n\n"
    return text + "}  // namespace android\n"


def generate():
    """The generated files: name and content."""
    shift_jis = checked_ranges(shift_jis_ranges(), 102, 7724, [(0x8140, 0x817E), (0x8180, 0x81AC), (0x81B8, 0x81BF)],
                               (0xFC40, 0xFC4B))
    gbk = checked_ranges(gbk_ranges(), 261, 21791, [(0x8140, 0x817E), (0x8180, 0x81FE), (0x8240, 0x827E)],
                         (0xFE40, 0xFE4F))
    big5 = checked_ranges(big5_ranges(), 174, 13503, [(0xA140, 0xA17E), (0xA1A1, 0xA1FE), (0xA240, 0xA27E)],
                          (0xF9A1, 0xF9FE), [(0xA3E1, 0xA3E1)])
    gbk_rows = checked(gb_to_unicode(), 23940, [(0x8140, 0x4E02)], (0xFEFE, 0xE4C5),
                       [(0xA2E3, 0x20AC), (0xAAA1, 0xE000), (0xF8A1, 0xE234), (0xA140, 0xE4C6), (0xA7A0, 0xE765),
                        (0xA8BF, 0x01F9), (0xFE50, 0x2E81)],
                       [code for code in DOUBLE_BYTE_CODES if code & 0xFF != 0x7F])
    big5_rows = checked(big5_to_unicode(), 13710, [(0xA140, 0x3000), (0xA141, 0xFF0C)], (0xF9D5, 0x9F98),
                        [(0xA145, 0x2027), (0xA244, 0xFFE5), (0xA440, 0x4E00), (0xC6A1, 0x30FE)])
    farsi_rows = checked(farsi_to_unicode(), 128, [(0x80, 0x20AC), (0x81, 0x067E)], (0xFF, 0x06D2), (),
                         list(range(0x80, 0x100)))
    spanish_rows = checked(spanish_to_unicode(), 123, [(0x80, 0x20AC)], (0xFF, 0x00FF), [(0x83, 0x0192)],
                           [code for code in range(0x80, 0x100) if code not in (0x81, 0x8D, 0x8F, 0x90, 0x9D)])
    hebrew_rows = checked(hebrew_to_unicode(), 51, [(0xAA, 0x00D7)], (0xFE, 0x200F),
                          [(0xDF, 0x2017), (0xE0, 0x05D0), (0xFD, 0x200E)],
                          [*range(0xAA, 0xBF), *range(0xDF, 0xFB), 0xFD, 0xFE])

    def double(record, name, rows):
        return array(record, name, rows, 4, 5, 8), name

    def single(record, name, rows):
        return array(record, name, rows, 2, 4, 4), name

    return {
        "CharsetTables.cpp": source("Code ranges of the double-byte encodings and the small conversion tables.", [
            double("CharRange", "kShiftJISRanges", shift_jis),
            double("CharRange", "kGBKRanges", gbk),
            double("CharRange", "kBig5Ranges", big5),
            single("Farsi2UnicodeTb2", "FarsitoUnicode", farsi_rows),
            single("Spanish2UnicodeTb4", "SpanishtoUnicode", spanish_rows),
            single("Hebrew2UnicodeTb5", "HebrewtoUnicode", hebrew_rows),
        ]),
        "CharsetTablesGbk.cpp": source("GBK to Unicode.", [double("GB2UnicodeTbl", "GB2Unicode", gbk_rows)]),
        "CharsetTablesBig5.cpp": source("Big5 to Unicode.", [double("Big52UnicodeTb3", "Big5toUnicode", big5_rows)]),
    }


def first_difference(committed, generated):
    left, right = committed.splitlines(), generated.splitlines()
    for number, (old, new) in enumerate(zip(left, right), 1):
        if old != new:
            return f"line {number}: has '{old}', should have '{new}'"
    return f"has {len(left)} lines, should have {len(right)}"


def main():
    arguments = argparse.ArgumentParser(description="Writes the character set tables of subtitle/charset.")
    arguments.add_argument("--check", action="store_true", help="compare with the files that are there")
    check = arguments.parse_args().check
    stale = 0
    for name, text in generate().items():
        path = TABLES / name
        if not check:
            path.write_text(text, encoding="ascii")
            continue
        committed = path.read_text(encoding="ascii") if path.exists() else ""
        if committed != text:
            print(f"{path}: {first_difference(committed, text)}; run tools/gen_charsets.py", file=sys.stderr)
            stale = 1
    return stale


if __name__ == "__main__":
    sys.exit(main())
