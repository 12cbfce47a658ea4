"""pip install . : the module built by the project's own CMake build (the same flags as the
programs), with the DSSP helper program beside it in the package."""

import os
import shutil
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext


class CMakeBuild(build_ext):
    def build_extension(self, extension):
        source = os.path.dirname(os.path.abspath(__file__))
        build = os.path.abspath(os.path.join(self.build_temp, "cmake"))
        configure = ["cmake", "-S", source, "-B", build, "-DCMAKE_BUILD_TYPE=Release", "-DQUARNEL_TESTS=OFF",
                     "-DPython3_EXECUTABLE=" + sys.executable]
        try:  # pybind11 from PyPI where the system has no pybind11-dev
            import pybind11
            configure.append("-Dpybind11_DIR=" + pybind11.get_cmake_dir())
        except ImportError:
            pass
        subprocess.check_call(configure)
        jobs = str(os.cpu_count() or 1)
        subprocess.check_call(["cmake", "--build", build, "-j", jobs, "--target", "_quarnel",
                               "quarnel-secondary"])
        target = os.path.dirname(os.path.abspath(self.get_ext_fullpath(extension.name)))
        os.makedirs(target, exist_ok=True)
        built = os.path.join(build, "python", "quarnel")
        for name in os.listdir(built):
            if name.startswith("_quarnel") and name.endswith(".so"):
                shutil.copy2(os.path.join(built, name), self.get_ext_fullpath(extension.name))
        shutil.copy2(os.path.join(build, "quarnel-secondary"), os.path.join(target, "quarnel-secondary"))


setup(ext_modules=[Extension("quarnel._quarnel", sources=[])], cmdclass={"build_ext": CMakeBuild})
