# The Python module quarnel (python/quarnel and its extension _quarnel), built whenever pybind11
# and the Python headers are found. The system's python3 is preferred: it is the one Debian's
# python3-gemmi, numpy and the module's installed place belong to.
option(QUARNEL_PYTHON "Build the Python module when pybind11 is found" ON)
if(NOT QUARNEL_PYTHON OR QUARNEL_SANITIZE OR QUARNEL_TSAN)
  return()
endif()
if(NOT DEFINED Python3_EXECUTABLE AND EXISTS /usr/bin/python3)
  set(Python3_EXECUTABLE /usr/bin/python3)
endif()
find_package(Python3 COMPONENTS Interpreter Development.Module)
if(Python3_FOUND)
  set(PYBIND11_FINDPYTHON ON)
  find_package(pybind11 CONFIG QUIET)
endif()
if(NOT Python3_FOUND OR NOT pybind11_FOUND)
  message(STATUS "quarnel: no Python module (needs pybind11 and the Python headers: "
                 "Debian pybind11-dev python3-dev)")
  return()
endif()

set(package_dir ${CMAKE_BINARY_DIR}/python/quarnel)
# Without the extras: no link-time optimisation, which would compile the engine again under
# other rules than the programs' own.
pybind11_add_module(_quarnel MODULE NO_EXTRAS python/module.cpp secondary/absent/dssp_library_absent.cpp)
target_link_libraries(_quarnel PRIVATE quarnel_library)
set_target_properties(_quarnel PROPERTIES QUARNEL_SHARED_LINK ON)
# The bindings are glue around the library's calls: -O1 builds pybind11's templates in half
# the time and costs nothing measurable in a chop.
set_source_files_properties(python/module.cpp PROPERTIES COMPILE_OPTIONS -O1)
set_target_properties(_quarnel PROPERTIES LIBRARY_OUTPUT_DIRECTORY ${package_dir})
file(GLOB package_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/python/quarnel/*.py)
foreach(source ${package_sources})
  get_filename_component(name ${source} NAME)
  configure_file(${source} ${package_dir}/${name} COPYONLY)
endforeach()
add_dependencies(_quarnel quarnel-secondary)
set(QUARNEL_PYTHON_EXECUTABLE ${Python3_EXECUTABLE} CACHE INTERNAL "The Python the module is built for")

# Where the system's Python looks: /usr/lib/python3/dist-packages under /usr, Debian's
# lib/python3.X/dist-packages under any other prefix.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(python_dir lib/python3/dist-packages)
else()
  set(python_dir lib/python${Python3_VERSION_MAJOR}.${Python3_VERSION_MINOR}/dist-packages)
endif()
set(QUARNEL_PYTHON_INSTALL_DIR ${python_dir} CACHE STRING "Where cmake --install puts the Python module")
install(TARGETS _quarnel LIBRARY DESTINATION ${QUARNEL_PYTHON_INSTALL_DIR}/quarnel)
install(FILES ${package_sources} DESTINATION ${QUARNEL_PYTHON_INSTALL_DIR}/quarnel)
