"""The example's INF holds together, and installs nothing outside the driver store.

    check_inf.py INF DOCUMENT

Every section that is named exists, and every section is named; every file that is copied has a source, every source
is copied; every %string% is given and used. Destinations are DIRID 13, registry entries relative to the device. Lines
that the document quotes stand in the file.
"""

import pathlib
import re
import sys

inf, document = (pathlib.Path(path) for path in sys.argv[1:])
faults = []


def expect(what, message):
    if not what:
        faults.append(message)


def read(text):
    """Sections with their lines, comments gone."""
    sections, name = {}, None
    for line in text.splitlines():
        line = re.sub(r"\s*;.*", "", line).strip()
        if found := re.fullmatch(r"\[(.*)\]", line):
            name = found[1]
            expect(name not in sections, f"[{name}] stands twice")
            sections[name] = []
        elif line:
            sections[name].append(line)
    return sections


def value(section, key):
    found = [line.split("=", 1)[1].strip() for line in sections.get(section, ())
             if line.split("=")[0].strip().lower() == key.lower()]
    return found[0] if found else None


text = inf.read_text()
sections = read(text)
used = {"Version", "Manufacturer", "SourceDisksNames", "SourceDisksFiles", "DestinationDirs", "Strings"}
for name in used:
    expect(name in sections, f"no section [{name}]")


def refer(name, by):
    used.add(name)
    expect(name in sections, f"[{by}] names [{name}], which is not there")
    return name


# From the manufacturer to the models, the installation and all that it names.
for line in sections.get("Manufacturer", ()):
    models, *targets = [part.strip() for part in line.split("=")[1].split(",")]
    expect(targets, "a list of models without a target system")
    for target in targets:
        expect(int(target.rsplit(".", 1)[1]) >= 16299, f"{target}: DIRID 13 needs build 16299 or later")
        for model in sections.get(refer(f"{models}.{target}", "Manufacturer"), ()):
            install = model.split("=")[1].split(",")[0].strip() + ".NT"
            refer(install, f"{models}.{target}")
            for ending in ("HW", "Interfaces", "Services"):
                refer(f"{install}.{ending}", install)
copied = set()
for name in list(sections):
    for line in sections[name]:
        key, _, rest = (part.strip() for part in line.partition("="))
        if key == "CopyFiles":
            for listed in rest.split(","):
                copied |= set(sections.get(refer(listed.strip(), name), ()))
        elif key == "AddReg":
            for listed in rest.split(","):
                for entry in sections.get(refer(listed.strip(), name), ()):
                    expect(entry.startswith("HKR,"), f"not relative to the device: {entry}")
        elif key in ("AddInterface", "AddService"):
            refer(rest.split(",")[2].strip(), name)
expect(set(sections) == used, f"named by nobody: {sorted(set(sections) - used)}")

sources = {line.split("=")[0].strip() for line in sections.get("SourceDisksFiles", ())}
expect(copied and copied == sources, f"copied {sorted(copied)}, but of the package are {sorted(sources)}")
expect({"camera.sys", "ppl.sys"} <= copied, "driver and library are not both copied")
for line in sections.get("DestinationDirs", ()):
    expect(line.split("=")[1].strip() == "13", f"not the driver store: {line}")
service = next((line.split(",")[2].strip() for line in sections.get("Camera_Install.NT.Services", ())), None)
binary = value(service, "ServiceBinary") or ""
expect(binary.startswith("%13%\\") and binary[5:] in copied, f"the service's binary is {binary}")
expect(value("Version", "PnpLockdown") == "1", "no PnpLockdown")
expect((value("Version", "CatalogFile") or "").endswith(".cat"), "no catalog")
outside = re.search(r"system32|%1[0-2]%|HKLM|HKCR|HKCU", re.sub(r";.*", "", text), re.I)
expect(not outside, f"outside the package: {outside and outside[0]}")

given = {line.split("=")[0].strip() for line in sections.get("Strings", ())}
wanted = set(re.findall(r"%([A-Za-z_]+)%", re.sub(r";.*", "", text)))
expect(given == wanted, f"strings given and wanted differ: {sorted(given ^ wanted)}")

quoted = [line.strip() for block in re.findall(r"```inf\n(.*?)```", document.read_text(), re.S)
          for line in block.splitlines() if line.strip()]
expect(len(quoted) > 5, f"{document.name} quotes nothing")
lines = {line.strip() for line in text.splitlines()}
for line in quoted:
    expect(line in lines, f"{document.name} quotes what is not in {inf.name}: {line}")

print("\n".join(faults) or
      f"{len(sections)} sections, {len(copied)} files, {len(given)} strings, {len(quoted)} lines quoted")
sys.exit(bool(faults))
