"""What a shared library consists of, by file and by kind, and how deep its calls go on the stack."""

import re
import subprocess
from collections import Counter, defaultdict
from pathlib import Path

from elftools.elf.elffile import ELFFile

# The kinds of what a source file defines, by the section in which it lies.
CODE, CONSTANTS, TABLES, VARIABLES = "code", "constants", "tables", "variables"
KINDS = {
    ".text": CODE,
    ".rodata": CONSTANTS,
    ".data.rel.ro": TABLES,  # constants with addresses, which the loader fills in
    ".data": VARIABLES,
    ".sdata": VARIABLES,
    ".bss": VARIABLES,
    ".sbss": VARIABLES,
}
# What belongs to no file.
LINKAGE = {
    "names for other programs": (".dynsym", ".dynstr", ".gnu.hash", ".gnu.version", ".gnu.version_d", ".gnu.version_r"),
    "relocations": (".rela.dyn", ".rela.plt"),
    "addresses of functions elsewhere": (".got", ".plt", ".dynamic"),
}
WRITABLE, LOADED = 1, 2  # flags of a section

# Who is called through a pointer, by the function that calls. A platform's functions are left out: they have their own stack.
THROUGH_POINTERS = {
    "SessionBracket::take": ("lmainte_scdb_open", "lmainte_scdb_lock"),
    "SessionBracket::release": ("lmainte_scdb_unlock", "lmainte_scdb_close"),
    "perform": (),
    "get_data": ("is_not_installed",),
    "lmainte_swap_fru_collect": ("reader<",),
    "lmainte_get_fru_data": ("reader<",),
    "with_file": ("lmainte_put_pinfo", "lmainte_clear_pinfo"),
    "lmainte_put_pinfo": ("provide_process_id",),
    "read_modules": ("cpu_module", "dimm"),
}


class Library:
    def __init__(self, path, root):
        self.path = path
        self.root = Path(root).resolve()
        with open(path, "rb") as file:
            elf = ELFFile(file)
            self.sections = {s.name: s["sh_size"] for s in elf.iter_sections() if s["sh_flags"] & LOADED}
            self.relro = self._read_only_once_loaded(elf)
            self._places = [(s["sh_addr"], s["sh_addr"] + s["sh_size"], s.name) for s in elf.iter_sections()
                            if s["sh_flags"] & LOADED]
            self.files = self._by_file(elf)

    @staticmethod
    def _read_only_once_loaded(elf):
        for segment in elf.iter_segments():
            if segment["p_type"] == "PT_GNU_RELRO":
                first, last = segment["p_vaddr"], segment["p_vaddr"] + segment["p_memsz"]
                return {s.name for s in elf.iter_sections() if first <= s["sh_addr"] < last}
        return set()

    def _section_at(self, address):
        return next((name for first, end, name in self._places if first <= address < end), None)

    def _by_file(self, elf):
        """{file: {kind: bytes}}: each symbol once, in the file of its definition."""
        declared = self._declared(elf)
        seen, files = set(), defaultdict(Counter)
        for symbol in elf.get_section_by_name(".symtab").iter_symbols():
            address, size = symbol["st_value"], symbol["st_size"]
            kind = KINDS.get(self._section_at(address))
            if size == 0 or kind is None or address in seen:
                continue
            seen.add(address)
            files[declared.get(address, "(the compiler)")][kind] += size
        return files

    def _declared(self, elf):
        """{address: source file} of functions and variables, from the debugging information."""
        declared = {}
        for unit in elf.get_dwarf_info().iter_CUs():
            for entry in unit.iter_DIEs():
                if entry.tag not in ("DW_TAG_subprogram", "DW_TAG_variable"):
                    continue
                address = self._address_of(entry)
                if address is not None:
                    declared[address] = self._file_of(unit, entry) or declared.get(address)
        return {address: file for address, file in declared.items() if file}

    @staticmethod
    def _address_of(entry):
        if "DW_AT_low_pc" in entry.attributes:
            return entry.attributes["DW_AT_low_pc"].value
        location = entry.attributes.get("DW_AT_location")
        if location is None or not isinstance(location.value, list) or location.value[0] != 0x03:  # DW_OP_addr
            return None
        return int.from_bytes(bytes(location.value[1:5]), "big")

    def _file_of(self, unit, entry):
        while "DW_AT_decl_file" not in entry.attributes:
            way = next((a for a in ("DW_AT_abstract_origin", "DW_AT_specification") if a in entry.attributes), None)
            if way is None:
                return None
            entry = entry.get_DIE_from_attribute(way)
            unit = entry.cu
        program = unit.dwarfinfo.line_program_for_CU(unit)
        file = program["file_entry"][entry.attributes["DW_AT_decl_file"].value - (program["version"] < 5)]
        folder = program["include_directory"][file.dir_index].decode()
        whole = Path(self.root, folder, file.name.decode()).resolve()  # the tree's own files are told from its root
        return str(whole.relative_to(self.root)) if whole.is_relative_to(self.root) else None

    def read_only(self):
        """Bytes of code and constants: what `size` calls text."""
        return sum(size for name, size in self.sections.items() if name not in self.relro and name not in KINDS
                   or KINDS.get(name) in (CODE, CONSTANTS))

    def tables(self):
        """Bytes of constants with addresses."""
        return sum(size for name, size in self.sections.items() if KINDS.get(name) == TABLES)

    def written(self):
        """Bytes of memory that can be written to at run time."""
        return sum(size for name, size in self.sections.items() if KINDS.get(name) == VARIABLES)

    def linkage(self):
        return {what: sum(self.sections.get(name, 0) for name in names) for what, names in LINKAGE.items()}


class Stack:
    """The depth of each call, from the machine code itself: how much each function takes, and whom it calls."""

    def __init__(self, path, objdump):
        text = subprocess.run([objdump, "-d", "-C", "--no-show-raw-insn", path], capture_output=True, text=True, check=True).stdout
        self.takes, self.calls = {}, defaultdict(set)
        through_pointers = set()
        name = None
        for line in text.splitlines():
            if start := re.match(r"[0-9a-f]{8} <(.+)>:$", line):
                name = start[1]
                self.takes[name] = 0
            elif frame := re.search(r"stwu\s+r1,-(\d+)\(r1\)", line):
                self.takes[name] += int(frame[1])
            elif target := re.search(r"\bbl?\s+[0-9a-f]+ <([^>+]+(?:<.*>)?[^>+]*)>$", line):
                self.calls[name].add(target[1])
            elif "bctrl" in line:
                through_pointers.add(name)
        for name in through_pointers:
            self.calls[name] |= self._called_by_pointer(name)

    def _called_by_pointer(self, name):
        row = next((row for row in THROUGH_POINTERS if row in name), None)
        if row is None:
            raise SystemExit(f"Whom does {name} call through a pointer? THROUGH_POINTERS has to say it.")
        return {each for each in self.takes for part in THROUGH_POINTERS[row] if part in each and each != name}

    def deepest(self, name, above=()):
        """(bytes, [name, ...]) of the deepest way down from a function."""
        best = 0, []
        for callee in self.calls[name]:
            if callee in self.takes and callee != name and callee not in above:
                best = max(best, self.deepest(callee, (*above, name)))
        return self.takes[name] + best[0], [name, *best[1]]
