#!/usr/bin/env python3
"""Lists what a build is made of beside this project (CycloneDX 1.5, JSON): the libraries that its programs load, and
those whose headers are compiled in, with version, licence and package.

usage: make_sbom.py --version VERSION [--headers NAME=PATH ..] PROGRAM_OR_LIBRARY .. > tarn.cdx.json
       make_sbom.py --version VERSION --carried FOLDER [--headers NAME=PATH ..] [--distributions NAME ..] LIBRARY ..
       make_sbom.py --check FILE [--build FOLDER] PROGRAM_OR_LIBRARY ..

Loaded libraries are those that `ldd` finds, the runtime of C and C++ among them; each has the Debian package that its
file is from. `--headers` names a library of headers alone by one of them. The same build gives the same text.

With --carried the list is of a folder that carries what it loads, as a wheel does: each of its shared libraries with its
SHA-256. The LIBRARY .. are the files that the folder's were copied from, of which the packages are asked; what the folder
loads besides is the user's own system, and isn't listed. `--distributions` names what was compiled in from PyPI.

With --check the list is compared with the programs and libraries: each file that one of them loads has to be in it, and
nothing else; with --build also each package whose headers the compiler read there, but for those of C and C++.
"""

import argparse
import hashlib
import importlib.metadata
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
# What this project makes, in a folder that carries others' libraries, too.
OWN_LIBRARY = re.compile(r"^(libtarn\.so|_binding\.)")
OWN_LICENCE = [{"license": {"id": "MIT"}}]


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


def library(kind, name, **facts):
    return {"type": "library", "name": name, "properties": [{"name": "tarn:use", "value": kind}], "bom-ref": name, **facts}


def from_a_source(kind, name, origin, version, licence):
    """A library of a source that has versions; `origin` is its package URL without the version."""
    reference = f"{origin}@{urllib.parse.quote(version, safe='.~:-')}"
    return library(kind, name, **{"bom-ref": f"{name} {reference}"}, version=version, purl=reference,
                   licenses=[{"license": {"name": licence}}])


def of_header(name, file):
    """A library of headers in no package, by what one of them says: version as macros, licence as its text."""
    text = pathlib.Path(file).read_text(errors="replace")
    numbers = [re.search(rf"#\s*define \w+_VERSION_{part} (\d+)", text) for part in ("MAJOR", "MINOR", "PATCH")]
    licence = re.search(r"^\W*(\w+ License)$", text, re.MULTILINE)
    if not all(numbers) or not licence:
        return library("compiled in", name)
    return from_a_source("compiled in", name, f"pkg:generic/{name}", ".".join(number[1] for number in numbers), licence[1])


def component(kind, name, file):
    package = package_of(file)
    if package is None:
        return of_header(name, file) if kind == "compiled in" else library(kind, name)
    return from_a_source(kind, name, f"pkg:deb/debian/{package}", version_of(package), licence_of(package))


def of_distribution(name):
    """What was compiled in from a distribution of PyPI."""
    facts = importlib.metadata.metadata(name)
    prefix = "License :: OSI Approved :: "
    classifiers = [one.removeprefix(prefix) for one in facts.get_all("Classifier", []) if one.startswith(prefix)]
    licence = facts.get("License-Expression") or next(iter(classifiers), "as its distribution says")
    return from_a_source("compiled in", name, f"pkg:pypi/{name}", facts["Version"], licence)


def document(version, components, dependencies):
    return {"bomFormat": FORMAT, "specVersion": FORMAT_VERSION, "version": 1,
            "metadata": {"component": {"type": "application", "bom-ref": "tarn", "name": "tarn", "version": version,
                                       "licenses": OWN_LICENCE}},
            "components": components, "dependencies": dependencies}


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
    return document(version, [*libraries.values(), *compiled.values()], [root, *edges])


def carried_library(file, copied_from, version):
    """A shared library of a folder: this project's, or the copy of one of a package."""
    if OWN_LIBRARY.match(file.name):
        one = library("carried", file.name, version=version, licenses=OWN_LICENCE)
    else:
        one = component("carried", file.name, copied_from.get(file.name, file))
    return {**one, "hashes": [{"alg": "SHA-256", "content": hashlib.sha256(file.read_bytes()).hexdigest()}]}


def make_of_folder(folder, copied_from, headers, distributions, version):
    files = sorted(file for file in folder.iterdir() if re.search(r"\.so(\.|$)", file.name))
    carried = {file.name: carried_library(file, copied_from, version) for file in files}
    compiled = [component("compiled in", name, path) for name, path in sorted(headers.items())]
    compiled += [of_distribution(name) for name in sorted(distributions)]
    edges = [{"ref": carried[file.name]["bom-ref"],
              "dependsOn": sorted(carried[asked]["bom-ref"] for asked in asked_for_by(file) if asked in carried)}
             for file in files]
    own = [name for name in carried if OWN_LIBRARY.match(name)]
    root = {"ref": "tarn", "dependsOn": own + [one["bom-ref"] for one in compiled]}
    return document(version, [*carried.values(), *compiled], [root, *edges])


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
    parser.add_argument("--carried", type=pathlib.Path)
    parser.add_argument("--headers", nargs="*", default=[])
    parser.add_argument("--distributions", nargs="*", default=[])
    parser.add_argument("--check", type=pathlib.Path)
    parser.add_argument("--build", type=pathlib.Path)
    options = parser.parse_args()
    if options.check:
        bom = json.loads(options.check.read_text())
        mistakes = mistakes_in(bom, options.files, options.build)
        print("\n".join(mistakes) or f"{len(bom['components'])} components, all of them there")
        return 1 if mistakes else 0
    headers = dict(header.split("=", 1) for header in options.headers)
    if options.carried:
        copied_from = {file.name: file.resolve() for file in options.files}
        bom = make_of_folder(options.carried, copied_from, headers, options.distributions, options.version)
    else:
        bom = make(options.files, headers, options.version)
    print(json.dumps(bom, indent=2))
    return 0


if __name__ == "__main__":
    sys.exit(main())
