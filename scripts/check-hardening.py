#!/usr/bin/env python3
"""Checks how programs and libraries are protected against an exploited fault.

check-hardening.py FILE...                ELF and PE files; prints what each lacks, and ends with "N files, N lacks"
check-hardening.py --sanitized FILE...    of a build with sanitizers: where it looks for libraries, and its memory

An ELF file has no writable and executable memory, no executable stack, all relocations read-only after loading (full RELRO),
a random address, protected stacks, and looks for libraries in its own folder and fixed ones of its installation alone. A PE
file has no writable and executable section, random addresses of 64 bits, no executable data, protected stacks and, in the MSVC
ABI, control flow guard and a load configuration that leaves out the current folder and PATH.
"""
import pathlib
import re
import subprocess
import sys

HIGH_ENTROPY, DYNAMIC_BASE, NX, CONTROL_FLOW_GUARD = 0x20, 0x40, 0x100, 0x4000
# cmp __security_cookie, rcx; jne; ret; mov ecx, 2; int 0x29
MSVC_COOKIE = re.compile(rb"\x48\x3b\x0d....\x75.\xc3\xb9\x02\x00\x00\x00\xcd\x29", re.DOTALL)
# What GCC's runtime prints.
MINGW_COOKIE = b"stack smashing detected"
DEFAULT_DIRS = 0x1000


def output(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True, errors="replace").stdout


def runpath(dynamic):
    """What is wrong with the folders where an ELF file looks for libraries."""
    for folders in re.findall(r"\((?:RPATH|RUNPATH)\).*\[(.*)\]", dynamic):
        for folder in folders.split(":"):
            if not folder.startswith(("$ORIGIN", "/")):
                yield f"libraries are looked for in '{folder}'" if folder else "libraries are looked for in the current folder"


def elf_memory(segments):
    if re.search(r"^ +LOAD .* RWE ", segments, re.MULTILINE):
        yield "memory that is writable and executable"
    if not re.search(r"^ +GNU_STACK .* RW +0x", segments, re.MULTILINE):
        yield "an executable stack"


def elf_lacks(file, sanitized):
    dynamic, segments = output("readelf", "-dW", file), output("readelf", "-lW", file)
    yield from runpath(dynamic)
    yield from elf_memory(segments)
    if sanitized:
        return
    if "GNU_RELRO" not in segments or not re.search(r"BIND_NOW|Flags: .*NOW", dynamic):
        yield "no full RELRO"
    if "TEXTREL" in dynamic or " DYN " not in output("readelf", "-hW", file):
        yield "no random address"
    if "__stack_chk_fail" not in output("readelf", "--dyn-syms", "-W", file):
        yield "no protected stacks"


def pe_load_config(file, data):
    config = output("llvm-readobj-14", "--coff-load-config", file)
    number = lambda name: int(re.search(rf"\b{name}: (\w+)", config + f"\n{name}: 0")[1], 0)
    if number("SecurityCookie") == 0 or not MSVC_COOKIE.search(data):
        yield "no protected stacks"
    if number("GuardCFFunctionCount") == 0 or number("GuardCFCheckDispatch") == 0:
        yield "no control flow guard"
    if number("DependentLoadFlags") != DEFAULT_DIRS:
        yield "libraries are looked for in the current folder"


def pe_lacks(file, sanitized):
    headers, data = output("objdump", "-p", file), pathlib.Path(file).read_bytes()
    flags = int(re.search(r"^DllCharacteristics\s+([0-9a-f]+)", headers, re.MULTILINE)[1], 16)
    for flag, lack in ((HIGH_ENTROPY | DYNAMIC_BASE, "no random address of 64 bits"), (NX, "executable data")):
        if flags & flag != flag:
            yield lack
    for section in re.findall(r"^ +\d+ (\S+) .*\n +(.*CODE.*)$", output("objdump", "-h", file), re.MULTILINE):
        if "READONLY" not in section[1]:
            yield f"section {section[0]} is writable and executable"
    if flags & CONTROL_FLOW_GUARD:
        yield from pe_load_config(file, data)
    elif b"vcruntime140" in data.lower():
        yield "no control flow guard"
    elif MINGW_COOKIE not in data and not sanitized:
        yield "no protected stacks"


def lacks(file, sanitized=False):
    """What a file lacks, as a list of texts; empty when it has all."""
    kind = elf_lacks if pathlib.Path(file).read_bytes()[:4] == b"\x7fELF" else pe_lacks
    return list(kind(str(file), sanitized))


def main(arguments):
    sanitized = arguments[:1] == ["--sanitized"]
    files = arguments[1:] if sanitized else arguments
    if not files:
        sys.exit(__doc__)
    found = [(file, lack) for file in files for lack in lacks(file, sanitized)]
    for file, lack in found:
        print(f"{file}: {lack}")
    print(f"{len(files)} files, {len(found)} lacks")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
