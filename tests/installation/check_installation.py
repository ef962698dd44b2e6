#!/usr/bin/env python3
"""Checks a release build from outside: what is installed is all that is used.

usage: check_installation.py CHECK --build FOLDER --scratch FOLDER --version VERSION --cmake PROGRAM

CHECK "install" installs the build into the scratch folder and has to come first; the other checks use the tree there:
"files", "command", "cmake" and "pkgconfig". Says what is wrong and exits 1 if anything is.
"""
import argparse
import json
import os
import re
import shutil
import subprocess
import sys
import xml.etree.ElementTree

SOURCE = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", ".."))
FOREIGN = os.path.join(SOURCE, "tests", "installation", "foreign")
TINY_HOST = ("tests/component/tiny_host.c", "tests/component/tiny_host.h")

# One of each kind; {soversion} is the version without its last number.
FILES = """
bin/tarn
lib/libtarn.so
lib/libtarn.so.{soversion}
lib/libtarn.so.{version}
lib/libtarn_common.a
lib/cmake/tarn/tarnConfig.cmake
lib/cmake/tarn/tarnConfigVersion.cmake
lib/cmake/tarn/tarnTargets.cmake
lib/cmake/tarn/tarnCommonTargets.cmake
lib/pkgconfig/tarn.pc
include/tarn/platform/hx/hx.h
include/tarn/catalogue/TARNFactory.h
include/tarn/planning/TARNReporter.h
share/man/man1/tarn.1
share/bash-completion/completions/tarn.bash
share/zsh/site-functions/_tarn
share/tarn/reference/README.md
share/tarn/reference/published/independent-mann-whitney.json
share/tarn/reference/functions/SfChi.json
share/tarn/reference/make/functions.py
share/doc/tarn/copyright
share/doc/tarn/README.md
share/doc/tarn/CHANGELOG.md
share/doc/tarn/tarn.cdx.json
share/doc/tarn/docs/host-interface.md
share/doc/tarn/examples/sleep_clinic.csv
"""


def run(command, **options):
    """The finished process; says what it said and ends this one if it failed."""
    done = subprocess.run(command, capture_output=True, text=True, **options)
    if done.returncode != 0:
        sys.exit("%s: status %d\n%s%s" % (" ".join(command), done.returncode, done.stdout, done.stderr))
    return done


def expect(what, found, expected):
    if found != expected:
        sys.exit("%s: %r, expected %r" % (what, found, expected))


class Installation:
    def __init__(self, options):
        self.options = options
        self.prefix = os.path.join(options.scratch, "tree")
        self.library = self.path("lib/libtarn.so." + options.version.rpartition(".")[0])

    def path(self, file):
        return os.path.join(self.prefix, file)

    def fresh_folder(self, name):
        folder = os.path.join(self.options.scratch, name)
        shutil.rmtree(folder, ignore_errors=True)
        os.makedirs(folder)
        return folder

    # ---- The checks ----

    def install(self):
        """Into one folder, and from there into another: nothing in the tree may name where it was installed."""
        first = self.fresh_folder("first")
        run([self.options.cmake, "--install", self.options.build, "--prefix", first])
        shutil.rmtree(self.prefix, ignore_errors=True)
        os.rename(first, self.prefix)

    def files(self):
        version = self.options.version
        expected = FILES.format(version=version, soversion=version.rpartition(".")[0]).split()
        expect("missing files", [file for file in expected if not os.path.exists(self.path(file))], [])
        for text in ("lib/pkgconfig/tarn.pc", "lib/cmake/tarn/tarnConfig.cmake", "lib/cmake/tarn/tarnTargets.cmake",
                     "lib/cmake/tarn/tarnCommonTargets.cmake"):
            with open(self.path(text), encoding="utf-8") as file:
                content = file.read()
            for folder in (SOURCE, self.options.build, self.options.scratch):
                expect("%s names %s" % (text, folder), folder in content, False)
        self.headers_include_what_is_installed()

    def headers_include_what_is_installed(self):
        root = self.path("include/tarn")
        lost = []
        for folder, _, names in os.walk(root):
            for name in names:
                with open(os.path.join(folder, name), encoding="utf-8") as file:
                    included = re.findall(r'^#include "([^"]+)"', file.read(), re.MULTILINE)
                lost += [name + ": " + header for header in included if not os.path.exists(os.path.join(root, header))]
        expect("headers that are included and not installed", lost, [])

    def command(self):
        tarn = self.path("bin/tarn")
        told = run([tarn, "--version"]).stdout
        expect("version", told.splitlines()[0], "tarn " + self.options.version)
        self.expect_installed_library([tarn, "--version"])
        analysis = run([tarn, "analyze", self.path("share/doc/tarn/examples/sleep_clinic.csv"), "--related",
                        "hours_before,hours_after", "--tests", "sign", "--format", "json"])
        result = json.loads(analysis.stdout)
        # The figures of the tour in README.md.
        expect("application", result["application"], {"name": "tarn", "version": self.options.version})
        expect("cases", result["tests"][0]["n"], 303)
        expect("statistic", result["tests"][0]["statistics"][0]["statistic"], 211)
        # With the published results of the tree itself.
        for check in ([], ["--as-defined"], ["--functions"]):
            run([tarn, "verify", "--quiet", *check])
        with open(self.path("share/man/man1/tarn.1"), encoding="utf-8") as page:
            expect("version of the manual page", '"tarn %s"' % self.options.version in page.read(), True)

    def cmake(self):
        """A project that finds the package: a host in C that is linked with the library, and a caller in C++."""
        build = self.configure_foreign()
        run([self.options.cmake, "--build", build])
        self.expect_sign_test([os.path.join(build, "host")])
        self.expect_installed_library([os.path.join(build, "host")])
        self.expect_sign_test([os.path.join(build, "caller")])

    def pkgconfig(self):
        """The same host with the flags of pkg-config, which loads the library by name as well."""
        environment = dict(os.environ, PKG_CONFIG_PATH=self.path("lib/pkgconfig"))
        expect("version", run(["pkg-config", "--modversion", "tarn"], env=environment).stdout.strip(),
               self.options.version)
        flags = run(["pkg-config", "--cflags", "--libs", "tarn"], env=environment).stdout.split()
        folder = self.foreign_folder("pkgconfig")
        program = os.path.join(folder, "host")
        run(["cc", "-std=c11", "-o", program, "main.c", TINY_HOST[0], "-I.", "-Itests/component"] + flags +
            ["-ldl", "-Wl,-rpath," + self.path("lib")], cwd=folder)
        self.expect_sign_test([program])
        self.expect_sign_test([program, self.library])

    # ---- Their parts ----

    def foreign_folder(self, name):
        """A copy of the foreign project with the tiny host, so that no file of the house is in reach."""
        folder = self.fresh_folder(name)
        shutil.copytree(FOREIGN, folder, dirs_exist_ok=True)
        for file in TINY_HOST:
            os.makedirs(os.path.dirname(os.path.join(folder, file)), exist_ok=True)
            shutil.copy(os.path.join(SOURCE, file), os.path.join(folder, file))
        return folder

    def configure_foreign(self):
        folder = self.foreign_folder("cmake")
        build = os.path.join(folder, "build")
        run([self.options.cmake, "-S", folder, "-B", build, "-DCMAKE_PREFIX_PATH=" + self.prefix,
             "-DTINY_HOST_FOLDER=" + folder])
        return build

    def expect_sign_test(self, program):
        """The document of the test on (1, 2), (2, 4), (3, 2), (4, 4): two differences above 0, one below, one tie."""
        done = run(program)
        expect("standard error of " + program[0], done.stderr, "")
        document = xml.etree.ElementTree.fromstring(done.stdout)
        tests = [element for element in document.iter() if element.tag.endswith("Algorithm")]
        expect("tests", [test.get("name") for test in tests], ["RSign"])
        figures = {each.get("name"): each.get("value") for each in tests[0].iter() if each.get("value") is not None}
        names = ("PositiveDifferences", "NegativeDifferences", "Ties")
        expect("differences", [figures.get(name) for name in names], ["2", "1", "1"])

    def expect_installed_library(self, command):
        """The loader's own account: one engine is loaded, and it is the installed one."""
        account = run(command, env=dict(os.environ, LD_DEBUG="libs")).stderr
        loaded = set(re.findall(r"calling init: (\S*/libtarn\.so\S*)", account))
        expect("libraries that were loaded", {os.path.realpath(path) for path in loaded},
               {os.path.realpath(self.library)})


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("check", choices=["install", "files", "command", "cmake", "pkgconfig"])
    for option in ("build", "scratch", "version", "cmake"):
        parser.add_argument("--" + option, required=True)
    options = parser.parse_args()
    getattr(Installation(options), options.check)()


if __name__ == "__main__":
    main()
