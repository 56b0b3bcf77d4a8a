"""The module's library for Windows: exports these functions and no others, undecorated, and needs no libraries but the system's
and the agent's, with 32 bits those that handle exceptions, too: test_exports.py OBJDUMP EXPORTS_DEF LIBRARY"""

import re
import subprocess
import sys

SYSTEM = {"advapi32.dll", "kernel32.dll", "msvcrt.dll"}
AGENT = {"krx-agent.dll"}


def main(objdump, definition, library):
    headers = subprocess.run([objdump, "-p", library], check=True, capture_output=True, text=True).stdout
    table = headers[headers.index("[Ordinal/Name Pointer] Table"):]
    exported = re.findall(r"^\t\[ *\d+\] (\S+)$", table, re.MULTILINE)
    with open(definition, encoding="ascii") as file:
        wanted = file.read().split("EXPORTS")[1].split()
    needed = {name.lower() for name in re.findall(r"DLL Name: (\S+)", headers)}
    faults = []
    if len(wanted) != 17 or sorted(wanted) != sorted(exported):
        faults.append(f"exports {sorted(exported)} instead of {sorted(wanted)}")
    shared = {"libgcc_s_dw2-1.dll", "libwinpthread-1.dll"} if "pei-i386" in headers else set()
    if not AGENT | shared <= needed <= AGENT | shared | SYSTEM:
        faults.append(f"needs {sorted(needed)}")
    print("\n".join(faults) or f"{len(exported)} exports, needs {' '.join(sorted(needed))}")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
