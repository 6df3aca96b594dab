"""Conan 2 recipe; not run here.  conan create packaging/conan"""
import os

from conan import ConanFile
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain
from conan.tools.files import copy, load


class MvServerCppBinding(ConanFile):
    name = "mvservercppbinding"
    description = "Client library for exchanges with an application server through a server proxy"
    license = "Apache-2.0"
    package_type = "library"
    settings = "os", "compiler", "build_type", "arch"
    options = {"proxy": [True, False], "testkit": [True, False]}
    default_options = {"proxy": True, "testkit": False}
    tree = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")

    def set_version(self):
        self.version = load(self, os.path.join(self.tree, "VERSION")).strip()

    def export_sources(self):
        copy(self, "*", self.tree, self.export_sources_folder, excludes=("build/*", "out/*"))

    def requirements(self):
        self.requires("zlib/[>=1.2.11 <2]")
        self.requires("icu/[>=72]")
        if self.options.proxy:
            self.requires("libcurl/[>=7.85 <9]")

    def generate(self):
        CMakeDeps(self).generate()
        toolchain = CMakeToolchain(self)
        toolchain.variables["MV_BUILD_PROXY"] = bool(self.options.proxy)
        toolchain.variables["MV_BUILD_TESTKIT"] = bool(self.options.testkit)
        for part in ("HUB", "TOOLS", "TESTS", "EXAMPLES"):
            toolchain.variables[f"MV_BUILD_{part}"] = False
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()

    def package_info(self):
        # The package brings its own CMake files.
        self.cpp_info.set_property("cmake_find_mode", "none")
        self.cpp_info.builddirs = [os.path.join("lib", "cmake", "MvServerCppBinding")]
