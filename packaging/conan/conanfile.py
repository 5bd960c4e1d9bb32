"""Builds the library from the checkout that contains this recipe: conan create packaging/conan"""

import os

from conan import ConanFile
from conan.errors import ConanInvalidConfiguration
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy, rmdir


class VeskFileSystem(ConanFile):
    name = "vesk-filesystem"
    version = "1.1.0"
    description = "Paths, files, enumeration, streams, XML text and zip archives"
    topics = ("filesystem", "zip", "xml")
    package_type = "library"
    settings = "os", "arch", "compiler", "build_type"
    options = {"shared": [True, False], "libdeflate": [True, False], "zstd": [True, False],
               "bzip2": [True, False], "lzma": [True, False]}
    default_options = {"shared": True, "libdeflate": True, "zstd": True, "bzip2": True, "lzma": True,
                       "boost/*:header_only": True}

    def export_sources(self):
        root = os.path.join(self.recipe_folder, "..", "..")
        for pattern in ("CMakeLists.txt", "cmake/*", "include/*", "src/*"):
            copy(self, pattern, root, self.export_sources_folder)

    def layout(self):
        cmake_layout(self)

    def requirements(self):
        self.requires("boost/[>=1.74]", transitive_headers=True)
        self.requires("zlib/[>=1.2.11 <2]")
        if self.options.libdeflate:
            self.requires("libdeflate/[>=1.14]")
        if self.options.zstd:
            self.requires("zstd/[>=1.5.4 <2]")
        if self.options.bzip2:
            self.requires("bzip2/[>=1.0.8 <2]")
        if self.options.lzma:
            self.requires("xz_utils/[>=5.4 <6]")

    def validate(self):
        check_min_cppstd(self, 20)
        if self.settings.os not in ("Linux", "Windows"):
            raise ConanInvalidConfiguration("Linux and Windows are supported")

    def generate(self):
        toolchain = CMakeToolchain(self)
        # On Windows the system has the algorithms for AES.
        for name, value in (("TOOL", False), ("TESTS", False), ("WARNINGS", False),
                            ("AES", self.settings.os == "Windows"),
                            ("ISAL", False),
                            ("LIBDEFLATE", bool(self.options.libdeflate)),
                            ("ZSTD", bool(self.options.zstd)),
                            ("BZIP2", bool(self.options.bzip2)),
                            ("LZMA", bool(self.options.lzma))):
            toolchain.cache_variables[f"VESK_{name}"] = value
        toolchain.generate()
        dependencies = CMakeDeps(self)
        # The names that the project's own find module defines.
        dependencies.set_property("libdeflate", "cmake_file_name", "Libdeflate")
        dependencies.set_property("libdeflate", "cmake_target_name", "Libdeflate::Libdeflate")
        dependencies.set_property("libdeflate", "cmake_find_mode", "both")
        dependencies.set_property("zstd", "cmake_file_name", "Zstd")
        dependencies.set_property("zstd", "cmake_target_name", "Zstd::Zstd")
        dependencies.set_property("zstd", "cmake_find_mode", "both")
        dependencies.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        rmdir(self, os.path.join(self.package_folder, "lib", "cmake"))
        rmdir(self, os.path.join(self.package_folder, "lib", "pkgconfig"))

    def package_info(self):
        self.cpp_info.set_property("cmake_file_name", "VeskFileSystem")
        self.cpp_info.set_property("cmake_target_name", "Vesk::FileSystem")
        self.cpp_info.set_property("pkg_config_name", "vesk-filesystem")
        self.cpp_info.libs = ["Vesk.FileSystem"]
        self.cpp_info.requires = ["boost::headers", "zlib::zlib"]
        if self.options.libdeflate:
            self.cpp_info.requires.append("libdeflate::libdeflate")
        for option, requirement in (("zstd", "zstd::zstd"), ("bzip2", "bzip2::bzip2"),
                                    ("lzma", "xz_utils::xz_utils")):
            if self.options.get_safe(option):
                self.cpp_info.requires.append(requirement)
        if not self.options.shared:
            self.cpp_info.defines = ["FILESYSTEM_STATIC"]
        if self.settings.os == "Windows":
            self.cpp_info.system_libs = ["bcrypt", "ole32", "oleaut32", "version"]
