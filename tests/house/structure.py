#!/usr/bin/env python3
"""Checks that the tree is built as docs and CMake say: which file may include which, and who may start a process.

usage: structure.py [TREE]            checks TREE (default: the tree of this script); one line for each fault, status 1
       structure.py --self-test       plants one fault of each kind in small trees and sees that it is told

Floors, lowest first: Helpers, Models, Services, view models, Views, App. A file includes from its own floor and from
those below. A file below src/Views is a view model when CMake builds it into tarnwell_viewmodels. The terminal
emulator stands alone: its Engine is standard C++, the rest of it may use Qt and the Engine, and only src/Views/Terminal
includes it; src/Services/Terminal has its pseudo terminal.
"""
import re, sys, tempfile
from pathlib import Path

FLOORS = ["Helpers", "Models", "Services", "ViewModels", "Views", "App"]
# Folders of src/Views and the other ones there that each may include; every section may include these two.
SHARED = ["Components", "Theme"]
SECTIONS_BELOW = {"Theme": [], "Components": ["Theme"]}
SHELL = "Shell"  # owns navigation: includes every section, and none includes it
EMULATOR_USERS = ["Views/Terminal"]
PSEUDO_TERMINAL = ("TerminalEmulator/PseudoTerminal.h", "Services/Terminal/")  # no Qt: a service may have it as well
EMULATOR_CHILD = ["TerminalEmulator/PseudoTerminal.cpp"]
STARTS_PROCESSES = {  # what only these files may name
    r"\bQProcess\b": ["Services/Children/ChildProcess.h", "Services/Children/ChildProcess.cpp"],
    r"\b(posix_spawnp?|v?fork|forkpty)\s*\(": EMULATOR_CHILD,
    r"\b(popen|std::system)\s*\(": [],
}
INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*(["<])([^">]+)[">]', re.M)
COMMENT_OR_STRING = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"', re.S)
GENERATED = re.compile(r"(^|/)(moc_[^/]*\.cpp|[^/]*\.moc)$")


def closing(text, position, pair):
    """The position after what closes the bracket that was opened just before `position`."""
    depth = 1
    while depth and position < len(text):
        depth += {pair[0]: 1, pair[1]: -1}.get(text[position], 0)
        position += 1
    return position


class Tree:
    def __init__(self, top):
        self.src = Path(top) / "src"
        self.faults = []
        files = sorted(p for p in self.src.rglob("*") if p.suffix in (".h", ".cpp", ".inc"))
        self.text = {str(p.relative_to(self.src)): p.read_text(errors="replace") for p in files}
        self.code = {name: COMMENT_OR_STRING.sub(lambda m: re.sub(r"[^\n]", " ", m[0]), text)
                     for name, text in self.text.items()}
        self.view_models = self.built_into("tarnwell_viewmodels")

    def built_into(self, target):
        names = set()
        for cmake in self.src.rglob("CMakeLists.txt"):
            for sources in re.findall(rf"target_sources\(\s*{target}\s+([^)]*)\)", cmake.read_text()):
                folder = cmake.parent.relative_to(self.src)
                names.update(str(folder / word) for word in sources.split() if "." in word)
        return names

    def floor(self, name):
        top = name.split("/")[0]
        if top == "Views":
            top = "ViewModels" if name in self.view_models else "Views"
        return FLOORS.index(top) if top in FLOORS else None

    def fault(self, name, position, what):
        self.faults.append(f"src/{name}:{self.text[name].count(chr(10), 0, position) + 1}: {what}")

    # --- one edge -----------------------------------------------------------------------------------------------
    def check_edge(self, name, position, target):
        if target.startswith("TerminalEmulator/") and not name.startswith("TerminalEmulator/"):
            is_service = target == PSEUDO_TERMINAL[0] and name.startswith(PSEUDO_TERMINAL[1])
            if not is_service and not any(name.startswith(user + "/") for user in EMULATOR_USERS):
                self.fault(name, position, f'"{target}": only {", ".join(EMULATOR_USERS)} may include the emulator')
            return
        if name.startswith("TerminalEmulator/"):
            inside = "TerminalEmulator/Engine/" if name.startswith("TerminalEmulator/Engine/") else "TerminalEmulator/"
            if not target.startswith(inside):
                self.fault(name, position, f'"{target}": the emulator stands alone, this part includes {inside} only')
            return
        mine, other = self.floor(name), self.floor(target)
        if mine is None or other is None:
            self.fault(name, position, f'"{target}": a folder that belongs to no floor')
        elif other > mine:
            self.fault(name, position, f'"{target}": {FLOORS[mine]} may not include {FLOORS[other]}')
        elif name.startswith("Views/") and target.startswith("Views/"):
            self.check_sections(name, position, target)

    def check_sections(self, name, position, target):
        mine, other = name.split("/")[1], target.split("/")[1]
        if mine == other or mine == SHELL or other in SECTIONS_BELOW.get(mine, SHARED):
            return
        self.fault(name, position, f'"{target}": Views/{mine} may not include Views/{other}')

    def edges(self):
        """Checks each include and returns the graph of those inside the tree."""
        graph = {name: [] for name in self.text}
        for name, text in self.text.items():
            for found in INCLUDE.finditer(text):
                quote, target = found.groups()
                if quote == "<":
                    if re.match(r"Qt[A-Z]\w*/", target):
                        self.fault(name, found.start(), f"<{target}>: a Qt include is written without its module")
                    elif name.startswith("TerminalEmulator/Engine/") and re.match(r"Q[A-Z]|Qt", target):
                        self.fault(name, found.start(), f"<{target}>: the engine is standard C++ only")
                elif target in self.text:
                    graph[name].append(target)
                    self.check_edge(name, found.start(), target)
                elif not GENERATED.search(target) and not (self.src / Path(name).parent / (target + ".in")).exists():
                    self.fault(name, found.start(), f'"{target}": no such file below src, where includes are written from')
        return graph

    def check_circles(self, graph, what):
        """Depth first; an edge to one that is still open closes a circle."""
        state, told = {}, set()
        for start in graph:
            if start in state:
                continue
            state[start] = "open"
            path = [(start, iter(graph[start]))]
            while path:
                name, rest = path[-1]
                following = next(rest, None)
                if following is None:
                    state[name] = "done"
                    path.pop()
                elif state.get(following) == "open":
                    names = [step for step, _ in path]
                    circle = names[names.index(following):] + [following]
                    if frozenset(circle) not in told:
                        told.add(frozenset(circle))
                        self.faults.append(f"src: a circle of {what}: " + " -> ".join(circle))
                elif following not in state:
                    state[following] = "open"
                    path.append((following, iter(graph[following])))

    @staticmethod
    def domains(graph):
        """The graph between the folders of src/Services, one for each domain."""
        def domain(name):
            return "/".join(name.split("/")[:2]) if re.match(r"Services/\w+/", name) else None
        between = {}
        for name, targets in graph.items():
            if domain(name):
                mine = between.setdefault(domain(name), [])
                mine += [domain(target) for target in targets if domain(target) not in (None, domain(name))]
        return between

    # --- what the code names ------------------------------------------------------------------------------------
    def check_code(self):
        for name, code in self.code.items():
            for pattern, allowed in STARTS_PROCESSES.items():
                for found in re.finditer(pattern, code):
                    if name not in allowed:
                        self.fault(name, found.start(), f"{found[0].strip()}: children are started by ChildProcess only")
            for found in re.finditer(r"\bstatic\s+[\w:<>]+\s*[&*]\s*(instance|shared)\s*\(", code):
                self.fault(name, found.start(), f"{found[1]}(): no globals, collaborators come through the constructor")
            self.check_coroutines(name, code)
            if name.startswith("Views/") and self.floor(name) == FLOORS.index("Views"):
                for found in re.finditer(r"\bco_(await|return|yield)\b", code):
                    self.fault(name, found.start(), f"{found[0]}: a view only lays out, binds and forwards")
                if re.search(r"ViewModel\.(h|cpp)$", name):
                    self.faults.append(f"src/{name}: a view model is built into tarnwell_viewmodels")

    def check_coroutines(self, name, code):
        """A task outlives the call: what it is given by const reference or as a view may be a temporary that is gone.
        A reference that can be written through is a service."""
        for found in re.finditer(r"\bQCoro::Task<", code):
            end = closing(code, found.end(), "<>")
            function = re.compile(r"\s*([\w:]+)\s*\(").match(code, end)
            if not function:
                continue
            parameters = code[function.end():closing(code, function.end(), "()") - 1]
            if wrong := re.search(r"const\s+[\w:<>, *]+&|&&|\b(QStringView|QByteArrayView|\w+::string_view|\w+::span)\b",
                                  re.sub(r"(std::)?function<[^()]*\([^()]*\)>", "", parameters)):
                self.fault(name, found.start(), f"{function[1]}(): a task takes its inputs by value, not '{wrong[0]}'")

    def check(self):
        graph = self.edges()
        self.check_circles(graph, "includes")
        self.check_circles(self.domains(graph), "domains")
        self.check_code()
        return self.faults


# --- self-test ------------------------------------------------------------------------------------------------------
CLEAN = {
    "Helpers/Log.h": "#include <QString>\n#include <QtMath>\n",
    "Models/Server.h": '#include "Helpers/Log.h"\nQCoro::Task<> ask(Pool &pool, std::function<void(const QString &)> tell);\n',
    "Services/SSH/Pool.h": '#include "Models/Server.h"\n// QProcess is not named here, nor in "QProcess"\n',
    "Services/SSH/Pool.cpp": '#include "Services/SSH/Pool.h"\n#include "Pool.moc"\nQProcessEnvironment e;\n',
    "Services/Children/ChildProcess.cpp": "#include <QProcess>\nQProcess p;\n",
    "Views/CMakeLists.txt": "target_sources(tarnwell_viewmodels PRIVATE\n    Ports/PortsViewModel.h Ports/PortRow.h\n)\n",
    "Views/Theme/Palette.h": "",
    "Views/Components/Table.h": '#include "Views/Theme/Palette.h"\n',
    "Views/Ports/PortRow.h": '#include "Models/Server.h"\n',
    "Views/Ports/PortsViewModel.h": '#include "Services/SSH/Pool.h"\n#include "Views/Ports/PortRow.h"\n',
    "Views/Ports/PortsView.h": '#include "Views/Components/Table.h"\n#include "Views/Ports/PortsViewModel.h"\n',
    "Views/Terminal/TerminalView.h": '#include "TerminalEmulator/View/Widget.h"\n',
    "Views/Shell/ContentView.h": '#include "Views/Ports/PortsView.h"\n',
    "TerminalEmulator/Engine/Grid.h": "#include <vector>\n",
    "TerminalEmulator/View/Widget.h": '#include <QWidget>\n#include "TerminalEmulator/Engine/Grid.h"\n',
    "App/main.cpp": '#include "Views/Shell/ContentView.h"\n#include "Version.h"\n',
    "App/Version.h.in": "",
}
FAULTS = [  # file, line added to it, part of the fault that must be told
    ("Models/Server.h", '#include "Services/SSH/Pool.h"', "Models may not include Services"),
    ("Helpers/Log.h", '#include "App/main.cpp"', "Helpers may not include App"),
    ("Views/Ports/PortsViewModel.h", '#include "Views/Components/Table.h"', "ViewModels may not include Views"),
    ("Services/SSH/Pool.h", '#include "Views/Ports/PortsViewModel.h"', "Services may not include ViewModels"),
    ("Helpers/Log.h", '#include "Helpers/Log.h"', "circle of includes: Helpers/Log.h -> Helpers/Log.h"),
    ("Models/Server.h", '#include "Models/Other.h"', "circle of includes: Models/"),
    ("Services/Children/ChildProcess.cpp", '#include "Services/SSH/Pool.h"', "circle of domains: Services/"),
    ("Views/Ports/PortsView.h", '#include "Views/Terminal/TerminalView.h"', "Views/Ports may not include Views/Terminal"),
    ("Views/Ports/PortsView.h", '#include "Views/Shell/ContentView.h"', "Views/Ports may not include Views/Shell"),
    ("Views/Components/Table.h", '#include "Views/Ports/PortRow.h"', "Views/Components may not include Views/Ports"),
    ("Views/Theme/Palette.h", '#include "Views/Components/Table.h"', "Views/Theme may not include Views/Components"),
    ("Views/Ports/PortsView.h", '#include "TerminalEmulator/Engine/Grid.h"', "may include the emulator"),
    ("TerminalEmulator/View/Widget.h", '#include "Helpers/Log.h"', "stands alone"),
    ("TerminalEmulator/Engine/Grid.h", '#include "TerminalEmulator/View/Widget.h"', "stands alone"),
    ("TerminalEmulator/Engine/Grid.h", "#include <QString>", "standard C++ only"),
    ("Models/Server.h", "#  include <QtCore/QString>", "without its module"),
    ("Services/SSH/Pool.cpp", '#include "Pool.h"', "no such file below src"),
    ("Services/SSH/Pool.cpp", '#include "../SSH/Pool.h"', "no such file below src"),
    ("Services/SSH/Pool.cpp", "auto *p = new QProcess(this);", "QProcess: children"),
    ("Helpers/Log.h", 'FILE *f = popen("ls", "r");', "popen(: children"),
    ("Models/Server.h", "static Server &instance();", "no globals"),
    ("Models/Server.h", "QCoro::Task<QList<int>> load(int id,\n    const QString &path);", "not 'const QString &'"),
    ("Models/Server.h", "QCoro::Task<> load(QStringView path);", "not 'QStringView'"),
    ("Views/Ports/PortsView.h", "co_await load();", "a view only lays out"),
    ("Views/Ports/OtherViewModel.h", "", "built into tarnwell_viewmodels"),
    ("Stray/File.h", '#include "Helpers/Log.h"', "belongs to no floor"),
]


def plant(folder, files):
    for name, text in files.items():
        path = Path(folder) / "src" / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
    return Tree(folder).check()


def self_test():
    wrong = []
    with tempfile.TemporaryDirectory() as folder:
        wrong += [f"told without a fault: {fault}" for fault in plant(folder, CLEAN)]
    for name, line, expected in FAULTS:
        files = dict(CLEAN)
        if "Other.h" in line:
            files["Models/Other.h"] = '#include "Models/Server.h"\n'
        if "domains" in expected:
            files["Services/SSH/Launch.cpp"] = '#include "Services/Children/ChildProcess.cpp"\n'
        files[name] = files.get(name, "") + line + "\n"
        with tempfile.TemporaryDirectory() as folder:
            told = plant(folder, files)
        if not any(expected in fault for fault in told):
            wrong.append(f"not told: {line} in {name}, expected '{expected}', told {told}")
    print("\n".join(wrong) or f"{len(FAULTS)} planted faults were told")
    return 1 if wrong else 0


def main(arguments):
    if arguments == ["--self-test"]:
        return self_test()
    tree = Tree(arguments[0] if arguments else Path(__file__).resolve().parents[2])
    if not tree.text:
        print("no sources found", file=sys.stderr)
        return 2
    faults = tree.check()
    print("\n".join(faults) or f"{len(tree.text)} files, no fault")
    return 1 if faults else 0


sys.exit(main(sys.argv[1:]))
