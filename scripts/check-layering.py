#!/usr/bin/env python3
"""Holds the rooms apart: who may include whom, no circles, where the platform may show, how long a file may be.

check-layering.py [ROOT]     one line for each breach; exit code 1 when there is one
check-layering.py --self-test   proves, on trees made for it, that every kind of breach is caught
"""
import re
import sys
import tempfile
from pathlib import Path

# The rooms that a room may include adjacents itself. Tests, benches and fuzzers may include all.
MAY_INCLUDE = {
    "platform": set(),
    "framework": {"platform"},
    "qorlog": {"platform"},
    "qorth": {"framework", "platform"},
    "zebapi": {"qorth", "qorlog", "framework", "platform"},
    "zebstore": {"platform"},
    "tools": {"platform"},
    "examples": set(),
}
# The rooms inside a room, and which of its own rooms each may include adjacents itself.
INNER = {
    "zebapi": {
        "": {"constants", "frame", "values", "entryid", "tables", "objects", "session"},
        "constants": set(),
        "search": {"constants", "frame"},
        "frame": {"constants"},
        "values": {"constants", "frame"},
        "entryid": {"constants", "frame", "values"},
        "tables": {"constants", "frame", "values"},
        "objects": {"constants", "frame", "values", "entryid", "tables"},
        "session": {"constants", "search", "frame", "values", "entryid", "tables", "objects"},
    },
    "zebstore": {
        "": set(),
        "base": {""},
        "storage": {"", "base"},
        "notify": {"base", "storage"},
        "tables": {"base", "storage", "notify"},
        "objects": {"base", "storage", "notify", "tables"},
        "addressbook": {"base", "storage", "notify", "tables", "objects"},
        "profiles": {"", "base", "storage", "objects"},
        "session": {"base", "storage", "notify", "tables", "objects", "addressbook", "profiles"},
        "exports": {"", "base", "storage", "notify", "tables", "objects", "addressbook", "profiles", "session"},
    },
}
# Includes against that order, and those that close a circle of units (a header and the source of its name), which stated
# signatures force. Each file has its reason.
FORCED = {
    ("zebapi/values/TAGS.cpp", "zebapi/objects/IProp.h"): "CZebPropTagArray::ApplyTo(CZebIProp&)",
    ("zebapi/values/Binary.cpp", "zebapi/entryid/EntryIDInfo.h"): "CZebBinary::Dump of an entry identifier, which is made from a CZebBinary",
    ("zebapi/objects/AddressBook.cpp", "zebapi/session/SESSION.h"): "CZebAddressBook opens through the CZebSession that gives it",
    ("zebapi/objects/Folder.cpp", "zebapi/session/SESSION.h"): "CZebFolder::GetPropsOfChild(CZebSession&)",
    ("zebapi/objects/IProp.cpp", "zebapi/session/SESSION.h"): "CZebIProp::IsChildOf(CZebSession&)",
    ("zebapi/objects/MsgStore.cpp", "zebapi/session/SESSION.h"): "CZebMsgStore::IsUnderDeleted(CZebSession&)",
    ("zebapi/session/Profiles.cpp", "zebapi/session/Mapiload.h"): "CZebProfAdmin::Open() asks CZebAPI, which gives CZebProfAdmin",
}
ROOMS = [*MAY_INCLUDE, "tests", "bench", "fuzz"]
# Hosts include the library's public headers, which are those that the umbrella brings.
HOSTS = {"tools", "examples"}
UMBRELLA = "zebapi/ZebAPI.h"
# The doctor uses the internals of the provider search; the tools use the embedded provider's public constants.
EXCEPTIONS = {"tools/zeb/": {"zebapi/search/ProviderSearch.h", "zebstore/zebstore.h"}, "tools/common/": {"zebstore/zebstore.h"}}

# Rooms whose units must not form circles.
ACYCLIC = ["platform", "framework", "qorlog", "qorth", "zebapi", "zebstore"]

# Third-party headers, and who may use them.
THIRD_PARTY = {
    "utf8proc.h": {"zebstore", "tools", "tests"},
    "xxhash.h": {"zebstore", "tools"},
    "sqlite3.h": {"zebstore", "bench", "tests", "fuzz"},
    "date/": {"tools"},
    "CLI/": {"tools", "bench", "tests"},
    "nlohmann/": {"tools", "bench", "tests", "fuzz"},
    "libpff": {"tools", "tests"},
    "gmime/": {"tools", "bench", "tests"},
    "libxml/": {"tools"},
    "gsf/": {"platform"},
}
# Headers of one operating system; besides these, whatever platform/mapi.h includes.
SYSTEM_HEADER = re.compile(
    r"^(windows|winsock2?|shlobj|tlhelp32|unistd|dlfcn|fcntl|poll|pwd|pthread|spawn|termios|link|io|direct|process|comdef"
    r"|sys/.*|arpa/.*|netinet/.*|linux/.*|wine/.*)\.h$")
SYSTEM_ROOMS = {"platform", "framework", "qorth", "tests", "bench", "fuzz"}

PLATFORM_ROOMS = {"platform", "framework", "qorth"}
PLATFORM_MACRO = re.compile(
    r"\b(_WIN32|_WIN64|WIN32|__linux__|__linux|linux|__unix__|__unix|__APPLE__|__MINGW32__|__MINGW64__|__CYGWIN__|_MSC_VER"
    r"|__WINE__)\b")
CONDITION = re.compile(r"^\s*#\s*(?:if|ifdef|ifndef|elif)\b(.*)$")
INCLUDE = re.compile(r'^\s*#\s*include\s*(?:"([^"]+)"|<([^>]+)>)')

LONGEST_FILE = 600
LIMITED = {".cpp", ".h", ".py", ".sh"}


def logical_lines(path):
    """(number of its first line, text) of each line, continued lines joined."""
    pending, start = "", 0
    for number, line in enumerate(path.read_text(encoding="utf-8").split("\n"), 1):
        start = start or number
        if line.endswith("\\"):
            pending += line[:-1] + " "
            continue
        yield start, pending + line
        pending, start = "", 0


def inner_room(name):
    """"objects" for zebapi/objects/internal/OpenEntry.h, "" for zebapi/ZebAPI.h."""
    parts = name.split("/")
    return parts[1] if len(parts) > 2 else ""


def unit_of(name):
    """A header and the source of its name are one unit."""
    return name.rsplit(".", 1)[0]


def circles(graph):
    """The circles of a graph {node: set of nodes}, each as the sorted list of its nodes (Tarjan's components)."""
    index, low, stack, found = {}, {}, [], []

    def visit(node):
        index[node] = low[node] = len(index)
        stack.append(node)
        for other in graph.get(node, ()):
            if other not in index:
                visit(other)
                low[node] = min(low[node], low[other])
            elif other in stack:
                low[node] = min(low[node], index[other])
        if low[node] == index[node]:
            part = stack[stack.index(node):]
            del stack[stack.index(node):]
            if len(part) > 1:
                found.append(sorted(part))

    for node in sorted(graph):
        if node not in index:
            visit(node)
    return found


def includes(path):
    for number, line in logical_lines(path):
        found = INCLUDE.match(line)
        if found:
            yield number, found.group(1), found.group(2)


def resolve(root, path, quoted):
    """The included file as a path from the root; next to the including file when it is there."""
    adjacent = path.parent / quoted
    if not (root / quoted).exists() and adjacent.exists():
        return adjacent.resolve().relative_to(root.resolve()).as_posix()
    return quoted


def public_headers(root):
    """What a host gets with the umbrella header."""
    seen, open_ = set(), [UMBRELLA]
    while open_:
        name = open_.pop()
        if name in seen:
            continue
        seen.add(name)
        if (root / name).exists():
            open_ += [resolve(root, root / name, quoted) for _, quoted, _ in includes(root / name) if quoted]
    return seen


def covered_headers(root):
    """The system headers that platform/mapi.h includes."""
    path = root / "platform/mapi.h"
    return {angle for _, _, angle in includes(path) if angle} if path.exists() else set()


class Checker:
    def __init__(self, root):
        self.root = root
        self.public = public_headers(root)
        self.covered = covered_headers(root)
        self.breaches = []
        self.graph = {}
        self.forced = set()

    def run(self):
        for room in ROOMS + ["scripts", "cmake"]:
            for path in sorted((self.root / room).rglob("*")):
                if path.is_file() and path.suffix in LIMITED:
                    self.check(path.relative_to(self.root).as_posix(), path, room)
        for path in sorted(self.root.glob("*.sh")):
            self.check(path.name, path, "")
        for part in circles(self.graph):
            self.breach(part[0] + ".h", 1, f"a circle of units: {', '.join(part)}")
        for name, included in sorted(set(FORCED) - self.forced):
            if (self.root / name).exists():
                self.breach(name, 1, f'does not include "{included}" any more: take it off the list of what is forced')
        return self.breaches

    def breach(self, name, number, text):
        self.breaches.append(f"{name}:{number}: {text}")

    def check(self, name, path, room):
        length = path.read_text(encoding="utf-8").count("\n")
        if length > LONGEST_FILE and "/constants/" not in name:
            self.breach(name, length, f"the file has {length} lines, more than {LONGEST_FILE}")
        if path.suffix not in {".cpp", ".h"} or room == "cmake":
            return  # a compiler's runtime knows nothing of the tree
        for number, quoted, angle in includes(path):
            if quoted:
                self.check_quoted(name, number, room, resolve(self.root, path, quoted))
            else:
                self.check_angle(name, number, room, angle)
        self.check_conditions(name, path, room)

    def check_quoted(self, name, number, room, included):
        other = included.split("/")[0]
        if (name, included) in FORCED:
            self.forced.add((name, included))
            return
        if room in ACYCLIC and unit_of(name) != unit_of(included):
            self.graph.setdefault(unit_of(name), set()).add(unit_of(included))
        if room in INNER and other == room:
            self.check_inner(name, number, room, included)
        if room not in MAY_INCLUDE or other == room and (room != "tools" or self.same_tool(name, included)):
            return
        if any(name.startswith(prefix) and included in allowed for prefix, allowed in EXCEPTIONS.items()):
            return
        if other in MAY_INCLUDE[room]:
            return
        if room in HOSTS and included in self.public:
            return
        self.breach(name, number, f'{room} must not include "{included}"')

    def check_inner(self, name, number, room, included):
        """Rooms inside a room; a room's internal headers are its own and those of the rooms that build on it."""
        here, there = inner_room(name), inner_room(included)
        if here != there and there not in INNER[room].get(here, set()):
            self.breach(name, number, f'{room}/{here} must not include "{included}"')

    @staticmethod
    def same_tool(name, included):
        """Tools share tools/common and do not look into each other."""
        tool = included.split("/")[1]
        return tool == "common" or tool == name.split("/")[1]

    def check_angle(self, name, number, room, angle):
        for prefix, rooms in THIRD_PARTY.items():
            if angle.startswith(prefix) and room not in rooms:
                self.breach(name, number, f"{room} must not include <{angle}>")
        if room == "platform":
            return
        if angle in self.covered:
            self.breach(name, number, f'<{angle}> comes with "platform/mapi.h"')
        elif SYSTEM_HEADER.match(angle) and room not in SYSTEM_ROOMS:
            self.breach(name, number, f"{room} must not include the system's <{angle}>")

    def check_conditions(self, name, path, room):
        if room in PLATFORM_ROOMS:
            return
        for number, line in logical_lines(path):
            found = CONDITION.match(line)
            macro = found and PLATFORM_MACRO.search(found.group(1))
            if macro:
                self.breach(name, number, f"a condition on the platform ({macro.group(1)}) outside platform/")


# Each file of a tree, and the breach that it must give; None where it must give none.
SELF_TEST = {
    "platform/mapi.h": ("#include <windows.h>\n#include <mapix.h>\n#ifdef _WIN32\n#endif\n", None),
    "platform/export.h": ("", None),
    "cmake/abi/start.cpp": ("#include <windows.h>\n", None),
    "platform/console.h": ("", None),
    "platform/a.cpp": ('#include "framework/CString.h"\n', "1: platform must not include"),
    "framework/CString.h": ('#include "platform/mapi.h"\n#include <comdef.h>\n#ifdef _WIN32\n#endif\n', None),
    "framework/a.h": ('#include "qorth/Hex.h"\n', "1: framework must not include"),
    "qorlog/QorLog.h": ("#include <string>\n", None),
    "qorlog/a.cpp": ('#include "framework/CString.h"\n', "1: qorlog must not include"),
    "qorlog/b.cpp": ("\n#include <unistd.h>\n", "2: qorlog must not include the system's"),
    "qorth/Hex.h": ('#include "framework/CString.h"\n', None),
    "qorth/a.cpp": ('#include "qorlog/QorLog.h"\n', "1: qorth must not include"),
    "zebapi/ZebAPI.h": ('#include "zebapi/frame/MEM.h"\n', None),
    "zebapi/frame/MEM.h": ('#include "framework/CString.h"\n#include "platform/export.h"\n', None),
    "zebapi/search/ProviderSearch.h": ("", None),
    "zebapi/search/Inner.h": ('#include "ProviderSearch.h"\n#include "qorlog/QorLog.h"\n', None),
    "zebapi/objects/IProp.h": ("", None),
    "zebapi/values/TAGS.cpp": ('#include "zebapi/objects/IProp.h"\n', None),
    "zebapi/values/a.cpp": ('#include "zebapi/objects/IProp.h"\n', "1: zebapi/values must not include"),
    "zebapi/values/Binary.cpp": ("", "1: does not include \"zebapi/entryid/EntryIDInfo.h\" any more"),
    "zebapi/tables/A.h": ('#include "zebapi/tables/B.h"\n', "1: a circle of units: zebapi/tables/A, zebapi/tables/B"),
    "zebapi/tables/B.h": ("", None),
    "zebapi/tables/B.cpp": ('#include "zebapi/tables/A.h"\n', None),
    "zebstore/base/Guard.h": ("", None),
    "zebstore/storage/d.cpp": ('#include "zebstore/base/Guard.h"\n', None),
    "zebstore/base/a.cpp": ('#include "zebstore/storage/Database.h"\n', "1: zebstore/base must not include"),
    "zebstore/objects/a.cpp": ('#include "zebstore/addressbook/Contacts.h"\n', "1: zebstore/objects must not include"),
    "zebapi/a.cpp": ('#include "zebstore/zebstore.h"\n', "1: zebapi must not include"),
    "zebapi/b.cpp": ("#if defined(X) && \\\n    defined(_WIN32)\n#endif\n", "1: a condition on the platform (_WIN32)"),
    "zebapi/c.cpp": ("#include <mapix.h>\n", '1: <mapix.h> comes with "platform/mapi.h"'),
    "zebapi/d.cpp": ("#include <sqlite3.h>\n", "1: zebapi must not include <sqlite3.h>"),
    "zebapi/e.cpp": ("  # elif __linux__\n", "1: a condition on the platform (__linux__)"),
    "zebapi/f.cpp": ("// _WIN32 in a comment\n" * 601, "601: the file has 601 lines, more than 600"),
    "zebapi/constants/t.cpp": ("\n" * 2000, None),
    "zebstore/zebstore.h": ('#include "platform/mapi.h"\n#include <sqlite3.h>\n', None),
    "zebstore/base/b.cpp": ('#include "zebapi/MEM.h"\n', "1: zebstore must not include"),
    "zebstore/base/c.cpp": ('#include "framework/CString.h"\n', "1: zebstore must not include"),
    "zebstore/storage/c.cpp": ("#ifndef WIN32\n#endif\n", "1: a condition on the platform (WIN32)"),
    "tools/common/Progress.h": ('#include "platform/console.h"\n#include "zebapi/frame/MEM.h"\n', None),
    "tools/zeb/a.cpp": ('#include "zebapi/search/ProviderSearch.h"\n#include "zebstore/zebstore.h"\n'
                        '#include "tools/common/Progress.h"\n#include <CLI/CLI.hpp>\n', None),
    "tools/zeb/b.cpp": ('#include "zebapi/search/Inner.h"\n', "1: tools must not include"),
    "tools/zeb/c.cpp": ('#include "zebstore/tables/Table.h"\n', "1: tools must not include"),
    "tools/zeb-import/d.cpp": ('#include "zebapi/search/ProviderSearch.h"\n', "1: tools must not include"),
    "tools/zeb-import/e.cpp": ('#include "tools/zeb/Command.h"\n', "1: tools must not include"),
    "examples/inbox/main.cpp": ('#include "zebapi/ZebAPI.h"\n#include "framework/CString.h"\n', None),
    "examples/inbox/a.cpp": ('#include "qorth/Hex.h"\n', "1: examples must not include"),
    "tests/a.cpp": ('#include "zebstore/tables/Table.h"\n#include <sqlite3.h>\n#include <unistd.h>\n', None),
    "tests/b.cpp": ("#ifdef __MINGW32__\n#endif\n", "1: a condition on the platform (__MINGW32__)"),
    "scripts/long.py": ("#\n" * 601, "601: the file has 601 lines"),
}


def self_test():
    with tempfile.TemporaryDirectory() as folder:
        for name, (text, _) in SELF_TEST.items():
            (Path(folder) / name).parent.mkdir(parents=True, exist_ok=True)
            (Path(folder) / name).write_text(text, encoding="utf-8")
        breaches = Checker(Path(folder)).run()
    wrong = []
    for name, (_, wanted) in SELF_TEST.items():
        found = [line for line in breaches if line.startswith(name + ":")]
        if wanted is None:
            wrong += [f"reported without reason: {line}" for line in found]
        elif len(found) != 1 or not found[0].startswith(f"{name}:{wanted}"):
            wrong.append(f"{name}: wanted '{wanted}', got {found}")
    for line in wrong:
        print(line)
    return not wrong


def main(arguments):
    if arguments == ["--self-test"]:
        return 0 if self_test() else 1
    root = Path(arguments[0]) if arguments else Path(__file__).resolve().parent.parent
    if len(arguments) > 1 or not (root / "platform").is_dir():
        print(__doc__.strip(), file=sys.stderr)
        return 2
    breaches = Checker(root).run()
    for line in breaches:
        print(line)
    return 1 if breaches else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
