# The Python module, built for the `python3` that users run: the first on
# PATH (through a pyenv shim that is the interpreter the shim picks), not
# necessarily the system's own.
find_program(TAGWRIGHT_PYTHON3 python3 REQUIRED)
execute_process(COMMAND ${TAGWRIGHT_PYTHON3} -c "import sys; print(sys.executable)"
                OUTPUT_VARIABLE Python_EXECUTABLE OUTPUT_STRIP_TRAILING_WHITESPACE
                COMMAND_ERROR_IS_FATAL ANY)
set(PYBIND11_FINDPYTHON ON)
find_package(Python COMPONENTS Interpreter Development.Module REQUIRED)
find_package(pybind11 CONFIG REQUIRED)

# The module only forwards to the library: link-time optimisation buys it
# nothing, and GCC's LTO linker prints notes on every build.
set(CMAKE_INTERPROCEDURAL_OPTIMIZATION OFF)
pybind11_add_module(tagwright_python MODULE bindings/python/tagwright_module.cc)
set_target_properties(tagwright_python PROPERTIES
  OUTPUT_NAME tagwright
  LIBRARY_OUTPUT_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/python
  INSTALL_RPATH "${CMAKE_INSTALL_FULL_LIBDIR}")
target_link_libraries(tagwright_python PRIVATE tagwright)
target_compile_options(tagwright_python PRIVATE ${TAGWRIGHT_WARNINGS})

# Where `cmake --install` puts it: the interpreter's own site-packages, so
# that `import tagwright` works at once. Another interpreter of the same
# Python version finds it through PYTHONPATH, or set this at configure time.
execute_process(COMMAND ${Python_EXECUTABLE} -c "import sysconfig; print(sysconfig.get_path('platlib'))"
                OUTPUT_VARIABLE TAGWRIGHT_PYTHON_PLATLIB OUTPUT_STRIP_TRAILING_WHITESPACE)
set(TAGWRIGHT_PYTHON_INSTALL_DIR "${TAGWRIGHT_PYTHON_PLATLIB}" CACHE PATH
    "Folder the Python module installs into (absolute, or relative to the prefix)")
