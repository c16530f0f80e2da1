"""check_tree.py TREE: checks the programs and the SPDX document of an unpacked package."""

import json
import re
import subprocess
import sys
from pathlib import Path

TREE = Path(sys.argv[1])
OURS = {"TesselSLB_x64.dll", "TesselSLB_c.dll"}
# The DLLs of Windows that the programs may import.
SYSTEM = {name + ".dll" for name in
          ("advapi32", "dbghelp", "kernel32", "msvcrt", "ole32", "oleaut32", "shell32", "shlwapi", "user32", "version")}
BITS = {"HIGH_ENTROPY_VA", "DYNAMIC_BASE", "NX_COMPAT"}
problems = []


def check(condition, problem):
    if not condition:
        problems.append(problem)


def check_program(path):
    command = ["x86_64-w64-mingw32-objdump", "-p", str(path)]
    dump = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    imports = re.findall(r"DLL Name: (\S+)", dump)
    check(imports, f"{path.name} imports nothing")
    for name in imports:
        check(name in OURS or name.lower() in SYSTEM, f"{path.name} imports {name}")
    for bit in BITS:
        check(re.search(rf"^\s+{bit}$", dump, re.MULTILINE), f"{path.name} lacks {bit}")


def check_spdx():
    spdx = json.loads((TREE / "TesselSLB.spdx.json").read_text(encoding="utf-8"))
    names = {"./" + path.relative_to(TREE).as_posix() for path in TREE.rglob("*") if path.is_file()}
    listed = {file["fileName"] for file in spdx["files"]}
    check(names - listed == {"./SHA256SUMS", "./TesselSLB.spdx.json"}, "SPDX lists other files")
    known = {"SPDXRef-DOCUMENT"} | {entry["SPDXID"] for entry in spdx["files"] + spdx["packages"]}
    for link in spdx["relationships"]:
        check({link["spdxElementId"], link["relatedSpdxElement"]} <= known, f"SPDX: {link}")


programs = [path for path in TREE.rglob("*") if path.suffix in (".dll", ".exe")]
check(len(programs) == 4, "not four programs")
for program in programs:
    check_program(program)
check_spdx()
for problem in problems:
    print(problem)
sys.exit(1 if problems else 0)
