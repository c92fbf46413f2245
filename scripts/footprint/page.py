"""The tables in the page of sizes: how they are written there, and whether they are still true."""

BEGIN, END = "<!-- what ./dev footprint --keep writes -->\n", "<!-- until here -->\n"

# A number of the page may be off by a hundredth, and by this many bytes: a line of code more does not make the page untrue.
BYTES_OFF = 32


def with_tables(page, made):
    """The page with these tables in place of its own."""
    before, _, rest = page.partition(BEGIN)
    return before + BEGIN + made + END + rest.partition(END)[2]


def rows(tables):
    """{first cell: the others}"""
    cells = (line.strip("| ").split(" | ") for line in tables.splitlines() if line.startswith("| "))
    return {first: others for first, *others in cells}


def is_near(kept, made):
    if kept == made:
        return True
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
        elif first not in kept:
            yield f"there is no row {first}: {' | '.join(now[first])}"
        elif len(kept[first]) != len(now[first]) or not all(map(is_near, kept[first], now[first])):
            yield f"the row {first} says {' | '.join(kept[first])}; what is built has {' | '.join(now[first])}"
