#!/usr/bin/env python3
"""Lists what a build is made of beside this project (CycloneDX 1.5, JSON): the libraries that its programs load, and
those whose headers are compiled in, with version, licence and package.

usage: make_sbom.py --version VERSION [--headers NAME=PATH ..] PROGRAM_OR_LIBRARY .. > tarn.cdx.json
       make_sbom.py --check FILE [--build FOLDER] PROGRAM_OR_LIBRARY ..

Loaded libraries are those that `ldd` finds, the runtime of C and C++ among them; each has the Debian package that its
file is from. `--headers` names a library of headers alone by one of them. The same build gives the same text.

With --check the list is compared with the programs and libraries: each file that one of them loads has to be in it, and
nothing else; with --build also each package whose headers the compiler read there, but for those of C and C++.
"""

import argparse
import json
import pathlib
import re
import subprocess
import sys
import urllib.parse

FORMAT, FORMAT_VERSION = "CycloneDX", "1.5"
# The compiler's own, which are no library that somebody chose.
OF_THE_LANGUAGE = re.compile(r"^(libc6-dev|linux-libc-dev|libstdc\+\+-\d+-dev|libgcc-\d+-dev|libclang.*|libcrypt-dev)$")
LOADER = "ld-linux"


def output_of(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def loaded_by(file):
    """The files of the libraries that a program or library loads, by the names that it asks for; none of this project."""
    found = {}
    for line in output_of("ldd", str(file)).splitlines():
        match = re.match(r"\s*(\S+)(?: => (\S+))? \(0x", line)
        if match and (match[2] or LOADER in match[1]):
            found[pathlib.Path(match[1]).name] = pathlib.Path(match[2] or match[1]).resolve()
    own = {pathlib.Path(file).resolve().parent, pathlib.Path.cwd()}
    return {name: path for name, path in found.items() if path.parent not in own and not name.startswith("libtarn")}


def asked_for_by(file):
    return re.findall(r"\(NEEDED\).*\[(.+)\]", output_of("readelf", "-dW", str(file)))


def packages_of(files):
    """The Debian packages of files. Files of /usr/lib may be listed as of /lib, where they were before."""
    paths = [listed for file in map(str, files) for listed in {file, file.removeprefix("/usr")}]
    done = subprocess.run(["dpkg-query", "-S", *paths], capture_output=True, text=True)
    return {re.split("[:,]", line)[0] for line in done.stdout.splitlines() if not line.startswith("diversion")}


def package_of(file):
    """The Debian package of a file, or nothing."""
    return next(iter(packages_of([file])), None)


def version_of(package):
    return output_of("dpkg-query", "-W", "-f", "${Version}\n", package).splitlines()[0]


def licence_of(package):
    """The licence of all files that have no other, as the package says it."""
    text = pathlib.Path("/usr/share/doc", package, "copyright").read_text(errors="replace")
    for paragraph in re.split(r"\n\s*\n", text):
        if re.search(r"^Files:\s*\*\s*$", paragraph, re.MULTILINE):
            licence = re.search(r"^License:\s*(\S.*)$", paragraph, re.MULTILINE)
            if licence:
                return licence[1].strip()
    return f"as in /usr/share/doc/{package}/copyright"


def component(kind, name, file):
    package = package_of(file)
    described = {"type": "library", "name": name, "properties": [{"name": "tarn:use", "value": kind}]}
    if package is None:
        return {**described, "bom-ref": name}
    version = version_of(package)
    reference = f"pkg:deb/debian/{package}@{urllib.parse.quote(version, safe='.~:-')}"
    described |= {"bom-ref": f"{name} {reference}", "version": version, "purl": reference,
                  "licenses": [{"license": {"name": licence_of(package)}}]}
    return described


def make(files, headers, version):
    loaded = {}
    for file in files:
        loaded |= loaded_by(file)
    libraries = {name: component("loaded", name, path) for name, path in sorted(loaded.items())}
    compiled = {name: component("compiled in", name, path) for name, path in sorted(headers.items())}
    edges = [{"ref": libraries[name]["bom-ref"],
              "dependsOn": sorted(libraries[asked]["bom-ref"] for asked in asked_for_by(path) if asked in libraries)}
             for name, path in sorted(loaded.items())]
    own = sorted({asked for file in files for asked in asked_for_by(file) if asked in libraries})
    root = {"ref": "tarn", "dependsOn": [libraries[name]["bom-ref"] for name in own] +
                                        [one["bom-ref"] for one in compiled.values()]}
    return {"bomFormat": FORMAT, "specVersion": FORMAT_VERSION, "version": 1,
            "metadata": {"component": {"type": "application", "bom-ref": "tarn", "name": "tarn", "version": version,
                                       "licenses": [{"license": {"id": "MIT"}}]}},
            "components": [*libraries.values(), *compiled.values()],
            "dependencies": [root, *edges]}


def packages_read(build):
    """The packages whose headers the compiler read for what is shipped."""
    headers = set()
    is_shipped = False
    for line in output_of("ninja", "-C", str(build), "-t", "deps").splitlines():
        if not line.startswith(" "):
            is_shipped = re.match(r"(host|src|runtime|apps)/", line) is not None
        elif is_shipped and line.strip().startswith("/usr/include/"):
            headers.add(line.strip())
    return packages_of(sorted(headers))


def stem_of(package):
    """What a library and the package of its headers have in common: "zlib" of zlib1g and zlib1g-dev."""
    return re.sub(r"[\d.]+.*|-dev$", "", package.removeprefix("lib"))


def mistakes_in(bom, files, build):
    listed = {one["name"] for one in bom["components"] if one["properties"][0]["value"] == "loaded"}
    loaded = {name for file in files for name in loaded_by(file)}
    found = [f"{name}: loaded, and not in the list" for name in sorted(loaded - listed)]
    found += [f"{name}: in the list, and not loaded" for name in sorted(listed - loaded)]
    for one in bom["components"]:
        found += [f"{one['name']}: no {key}" for key in ("version", "purl", "licenses") if key not in one]
    references = [one["bom-ref"] for one in bom["components"]]
    if len(set(references)) != len(references):
        found.append("two components of one name")
    known = {"tarn", *references}
    for edge in bom["dependencies"]:
        found += [f"{name}: no component" for name in [edge["ref"], *edge["dependsOn"]] if name not in known]
    if build is not None:
        sources = {re.sub(r"\?.*|@.*", "", one.get("purl", "")).rpartition("/")[2] for one in bom["components"]}
        headers = {package for package in packages_read(build) if not OF_THE_LANGUAGE.match(package)}
        found += [f"{package}: its headers are compiled in, and it is not in the list" for package in sorted(headers)
                  if stem_of(package) not in map(stem_of, sources)]
    return found


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("files", nargs="+", type=pathlib.Path)
    parser.add_argument("--version", default="")
    parser.add_argument("--headers", nargs="*", default=[])
    parser.add_argument("--check", type=pathlib.Path)
    parser.add_argument("--build", type=pathlib.Path)
    options = parser.parse_args()
    if options.check:
        bom = json.loads(options.check.read_text())
        mistakes = mistakes_in(bom, options.files, options.build)
        print("\n".join(mistakes) or f"{len(bom['components'])} components, all of them there")
        return 1 if mistakes else 0
    headers = dict(header.split("=", 1) for header in options.headers)
    print(json.dumps(make(options.files, headers, options.version), indent=2))
    return 0


if __name__ == "__main__":
    sys.exit(main())
