# Debian packages, one a component of the installation: cpack --config <build>/CPackConfig.cmake

set(CPACK_PACKAGE_NAME vesk-hmm)
set(CPACK_PACKAGE_VENDOR "Vesk HMM")
# Every package has one of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_CONTACT "Vesk HMM maintainers <maintainers@vesk-hmm.example.net>"
    CACHE STRING "Maintainer of the packages")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_GENERATOR DEB)
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/package/Finish.cmake")

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Shared objects of another component, which no installed package knows.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
    "${PROJECT_BINARY_DIR}/src/vesk" "${PROJECT_BINARY_DIR}/src/veskcore")

set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

# vesk_package(<component> <package> <section> <synopsis> <line of text>...)
macro(vesk_package component package section synopsis)
    list(APPEND CPACK_COMPONENTS_ALL ${component})
    string(TOUPPER ${component} key)
    set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${package})
    set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section})
    set(lines "${synopsis}" ${ARGN})
    list(JOIN lines "\n" CPACK_COMPONENT_${key}_DESCRIPTION)
endmacro()

set(CPACK_COMPONENTS_ALL)
vesk_package(runtime libvesk-hmm1 libs
    "gesture recognition with hidden Markov models - libraries"
    "Turns strokes of a pointer, a finger or a tracked hand into direction"
    "symbols, and tells which of the trained gestures they are, or that they are"
    "none of them. This package holds libHMM and libVeskcore.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${CMAKE_CURRENT_LIST_DIR}/package/triggers")

vesk_package(development libvesk-hmm-dev libdevel
    "gesture recognition with hidden Markov models - development"
    "Headers, links, CMake package and pkg-config files of libHMM and libVeskcore,"
    "and the host-side library libVeskKit.a with its headers.")
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
if(vesk_kit_packages)
    list(TRANSFORM vesk_kit_packages REPLACE "(.+)" "lib\\1-dev" OUTPUT_VARIABLE vesk_kit_debs)
    list(JOIN vesk_kit_debs ", " CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS)
endif()

vesk_package(documentation libvesk-hmm-doc doc
    "gesture recognition with hidden Markov models - documentation"
    "Tutorial, guide for hosts, numerics, file formats, architecture and reference"
    "of libHMM, libVeskKit and the vesk program.")
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SHLIBDEPS OFF)

if(TARGET vesk)
    vesk_package(tools vesk-tools utils
        "train and use gesture recognisers from the shell"
        "The vesk program reads recorded strokes, trains a recogniser, says how good"
        "it is and what is wrong with the recordings, recognises further strokes, and"
        "shows or exports what it has learnt.")
    set(CPACK_COMPONENT_TOOLS_DEPENDS runtime)
endif()

if(TARGET vesk_python)
    vesk_package(python python3-vesk python
        "gesture recognition with hidden Markov models - Python"
        "The classes of libHMM on NumPy arrays, and a gesture classifier with the"
        "interface of a scikit-learn estimator.")
    set(CPACK_COMPONENT_PYTHON_DEPENDS runtime)
    set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
        "${VESK_PYTHON_NEEDS}, python3-numpy, python3-joblib, python3-sklearn")
endif()

include(CPack)
