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
            file, old, *rest = block + [""] * 2
            new = [text[2:].strip() for text in rest if text.startswith("+ ")]
            if not old.startswith("- ") or not new or len(block) < len(new) + 3:
                raise Wrong(f"{name}:{first}: an entry is a file, its line behind '- ', mutants behind '+ ', and the reason")
            entries.update({(file, old[2:].strip(), text): first for text in new})
        block = []
    return entries


def check_entries(name, entries, mutants):
    """Each entry has to stand for a mutant that there is."""
    known = {mutant.key for mutant in mutants}
    stale = [f"{name}:{number}: no mutant of {key[0]} is: {key[2]}" for key, number in entries.items() if key not in known]
    if stale:
        raise Wrong("\n".join(stale))
