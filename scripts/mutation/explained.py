"""The list of mutants that no test can notice, with the reasons."""


class Wrong(Exception):
    """An entry that says nothing, or nothing any more."""


def read_entries(name, text):
    """The entries of a list, each with the number of its first line."""
    entries, block, first = {}, [], 0
    for number, line in enumerate(text.split("\n") + [""], 1):
        if line.startswith("#"):
            continue
        if line.strip():
            first = first if block else number
            block.append(line)
            continue
        if block:
            if len(block) < 4 or not block[1].startswith("- ") or not block[2].startswith("+ "):
                raise Wrong(f"{name}:{first}: an entry is a file, its line behind '- ', the mutant's behind '+ ', and the reason")
            entries[block[0], block[1][2:].strip(), block[2][2:].strip()] = first
        block = []
    return entries


def check_entries(name, entries, mutants):
    """Each entry has to stand for a mutant that there is."""
    known = {mutant.key for mutant in mutants}
    stale = [f"{name}:{number}: no mutant of {key[0]} is: {key[2]}" for key, number in entries.items() if key not in known]
    if stale:
        raise Wrong("\n".join(stale))
