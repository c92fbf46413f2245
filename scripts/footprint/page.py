"""The tables in the page of sizes: how they are written there, and whether they are still true."""

BEGIN, END = "<!-- what ./dev footprint --keep writes -->\n", "<!-- until here -->\n"

# What a number of these tables may be off by, a hundredth or this many bytes: a line of code more does not make the row of a file
# untrue. The other tables are sums and names, and are what comes now.
NEARLY = "file", "call"
BYTES_OFF = 32


def with_tables(page, made):
    """The page with these tables in place of its own."""
    before, _, rest = page.partition(BEGIN)
    return before + BEGIN + made + END + rest.partition(END)[2]


def rows(tables):
    """{first cell: (first cell of the table's head, the others)}"""
    found, head = {}, None
    for line in tables.splitlines():
        if not line.startswith("| "):
            head = head if line.startswith("|") else None
            continue
        first, *others = line.strip("| ").split(" | ")
        head = head or first
        found[first] = head, others
    return found


def is_true(table, kept, made):
    if kept == made or table not in NEARLY:
        return kept == made
    if not (kept.replace(",", "").isdigit() and made.replace(",", "").isdigit()):
        return False
    kept, made = (int(cell.replace(",", "")) for cell in (kept, made))
    return abs(kept - made) <= max(BYTES_OFF, kept // 100)


def differences(page, made):
    """A sentence for each row of the page that is not what comes now."""
    kept, now = rows(page.partition(BEGIN)[2].partition(END)[0]), rows(made)
    for first in [*kept, *(each for each in now if each not in kept)]:
        if first not in now:
            yield f"the row {first} is of something that there is not"
            continue
        table, made_cells = now[first]
        if first not in kept:
            yield f"there is no row {first}: {' | '.join(made_cells)}"
            continue
        cells = kept[first][1]
        if len(cells) != len(made_cells) or not all(is_true(table, *pair) for pair in zip(cells, made_cells)):
            yield f"the row {first} says {' | '.join(cells)}; what is built has {' | '.join(made_cells)}"
