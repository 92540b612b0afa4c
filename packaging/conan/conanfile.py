"""A recipe of the sources that it lies in, for Conan 2: conan create packaging/conan

The resource libraries need windres and ld for Windows files on the machine (Debian:
binutils-mingw-w64-x86-64).
"""

import os
import re

from conan import ConanFile
from conan.errors import ConanInvalidConfiguration
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy, load, rmdir

required_conan_version = ">=2.0"


class VnbytstrConan(ConanFile):
    name = "vnbytstr"
    description = "Byte storage, ciphers, text and settings for desktop database programs"
    topics = ("storage", "encoding", "ccsid", "xml", "lists")
    package_type = "shared-library"
    settings = "os", "arch", "compiler", "build_type"
    options = {"controls": [True, False]}
    default_options = {"controls": False}

    def _root(self):
        return os.path.join(self.recipe_folder, "..", "..")

    def set_version(self):
        text = load(self, os.path.join(self._root(), "CMakeLists.txt"))
        self.version = re.search(r"project\(vnbytstr VERSION ([\d.]+)", text)[1]

    def export_sources(self):
        for pattern in ("CMakeLists.txt", "cmake/*", "include/*", "messages/*", "packaging/*", "src/*"):
            copy(self, pattern, self._root(), self.export_sources_folder)

    def requirements(self):
        self.requires("icu/[>=70]")
        self.requires("xerces-c/[>=3.2 <4]")
        if self.options.controls:
            self.requires("qt/[>=6.4 <7]")

    def validate(self):
        check_min_cppstd(self, 20)
        if self.settings.os != "Linux" or self.settings.arch != "x86_64":
            raise ConanInvalidConfiguration("vnbytstr is for 64-bit Linux.")

    def layout(self):
        cmake_layout(self)

    def generate(self):
        CMakeDeps(self).generate()
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["VNBYTSTR_CONTROLS"] = bool(self.options.controls)
        for part in ("EXAMPLES", "TESTS", "BENCH"):
            toolchain.cache_variables[f"VNBYTSTR_{part}"] = False
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        copy(self, "copyright", os.path.join(self.source_folder, "packaging", "debian"),
             os.path.join(self.package_folder, "licenses"))
        rmdir(self, os.path.join(self.package_folder, "lib", "pkgconfig"))

    def package_info(self):
        # The package's own CMake files know the targets and the folder of the resource libraries.
        self.cpp_info.set_property("cmake_find_mode", "none")
        self.cpp_info.builddirs.append(os.path.join("lib", "cmake", "vnbytstr"))
        self.cpp_info.libs = ["vnbytstr-controls", "vnbytstr"] if self.options.controls else ["vnbytstr"]
