# Writes the bill of materials of build/release/packages. Usage: bill.py OTHER-BILL, which may be empty
import hashlib, json, os, re, subprocess, sys, time
from datetime import datetime, timezone
from pathlib import Path
from urllib.parse import quote

LICENCES = {  # as SPDX names them
    "sqlite3": "blessing",
    "utf8proc": "MIT AND Unicode-DFS-2015",
    "uuid": "BSD-3-Clause",
    "stdc++": "GPL-3.0-or-later WITH GCC-exception-3.1",
    "gcc": "GPL-3.0-or-later WITH GCC-exception-3.1",
}
build = Path("build/release")
folder = build / "packages"
cache = dict(re.findall(r"^(\w+):\w+=(.*)$", (build / "CMakeCache.txt").read_text(), re.M))
version = cache["CMAKE_PROJECT_VERSION"]


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout.strip()


def library(name, file):
    """The package that a static library comes from: Homebrew's folder names it, or dpkg."""
    path = Path(file).resolve()
    if "Cellar" in path.parts:
        package, number = path.parts[path.parts.index("Cellar") + 1:][:2]
        url = f"pkg:generic/{quote(package)}@{quote(number)}"
    else:
        owner = output("dpkg", "-S", str(path)).partition(": ")[0]
        form = "${Package} ${Version} ${Architecture}"
        package, number, processor = output("dpkg-query", "-W", "-f", form, owner).split()
        url = f"pkg:deb/debian/{quote(package)}@{quote(number)}?arch={processor}"
    return {"type": "library", "bom-ref": url, "name": package, "version": number,
            "licenses": [{"expression": LICENCES[name]}], "purl": url}


def package(path):
    checksum = hashlib.sha256(path.read_bytes()).hexdigest()
    return {"type": "file", "bom-ref": path.name, "name": path.name, "version": version,
            "hashes": [{"alg": "SHA-256", "content": checksum}]}


inside = {name: cache.get(f"Trovi_{name}_LIBRARY", "") for name in ("sqlite3", "utf8proc", "uuid")}
if cache["TROVI_STATIC_DEPENDENCIES"] == "ON" and sys.platform != "darwin":
    for name in ("stdc++", "gcc"):
        inside[name] = output(cache["CMAKE_CXX_COMPILER"], f"-print-file-name=lib{name}.a")
libraries = [library(name, file) for name, file in inside.items() if file.endswith(".a")]
if sys.argv[1]:
    known = {each["bom-ref"] for each in libraries}
    libraries += [each for each in json.loads(Path(sys.argv[1]).read_text())["components"]
                  if each["type"] == "library" and each["bom-ref"] not in known]

bundle, = folder.glob("*.mcpb")
packages = [package(path) for pattern in ("*.deb", "*.tar.gz", "*.mcpb")
            for path in sorted(folder.glob(pattern))]
made = datetime.fromtimestamp(int(os.environ.get("SOURCE_DATE_EPOCH", time.time())), timezone.utc)
bill = {
    "bomFormat": "CycloneDX",
    "specVersion": "1.6",
    "version": 1,
    "metadata": {
        "timestamp": made.strftime("%Y-%m-%dT%H:%M:%SZ"),
        "component": {"type": "application", "bom-ref": "trovi", "name": "trovi", "version": version},
    },
    "components": packages + libraries,
    "dependencies": [{"ref": "trovi", "dependsOn": [each["bom-ref"] for each in packages]}] + [
        # The package of our library contains no executable, and so none of the others.
        {"ref": each["bom-ref"], "dependsOn": [
            its["bom-ref"] for its in libraries if not each["name"].startswith("libtrovicore-dev")]}
        for each in packages],
}
written = bundle.with_suffix(".cdx.json")
written.write_text(json.dumps(bill, indent=2) + "\n")
print(written.resolve())
