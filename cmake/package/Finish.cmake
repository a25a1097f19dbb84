# Brings what was installed for the packages into the form that Debian's policy asks for. Run by
# CPack, which tells where: a folder for every component.

find_program(gzip gzip REQUIRED)
find_program(doxygen doxygen)

# Code of others that is compiled in keeps its notices, which its own packages have here.
set(compiled_in_tools libcli11-dev libfmt-dev nlohmann-json3-dev)
set(compiled_in_development libfmt-dev nlohmann-json3-dev)

string(TIMESTAMP YEAR "%Y" UTC)
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} key)
    set(package ${CPACK_DEBIAN_${key}_PACKAGE_NAME})
    set(root "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}${CPACK_PACKAGING_INSTALL_PREFIX}")
    set(doc "${root}/share/doc/${package}")

    file(READ "${CMAKE_CURRENT_LIST_DIR}/copyright" copyright)
    string(CONFIGURE "${copyright}" copyright @ONLY)
    foreach(other IN LISTS compiled_in_${component})
        if(EXISTS "/usr/share/doc/${other}/copyright")
            file(READ "/usr/share/doc/${other}/copyright" notice)
            string(APPEND copyright "\nParts of ${other} are compiled in. Its notices:\n\n${notice}")
        endif()
    endforeach()
    file(WRITE "${doc}/copyright" "${copyright}")
    file(WRITE "${doc}/changelog" "\
${CPACK_PACKAGE_NAME} (${CPACK_PACKAGE_VERSION}) unstable; urgency=medium

  * Release ${CPACK_PACKAGE_VERSION}.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")

    if(component STREQUAL "documentation" AND doxygen)
        execute_process(
            COMMAND "${CMAKE_CURRENT_LIST_DIR}/../../scripts/reference"
                "${root}/share/doc/vesk-hmm/reference"
            OUTPUT_QUIET
            COMMAND_ERROR_IS_FATAL ANY)
    endif()

    file(GLOB flat "${root}/lib/*.so.*")
    if(flat)
        message(NOTICE "The libraries of ${package} go to /usr/lib; configured with "
            "-DCMAKE_INSTALL_PREFIX=/usr they go where Debian has those of the architecture.")
    endif()

    file(GLOB_RECURSE compressed "${root}/share/man/*.1")
    execute_process(COMMAND "${gzip}" -9nf "${doc}/changelog" ${compressed}
        COMMAND_ERROR_IS_FATAL ANY)

    # In their places of a Debian system, programs find the shared objects by themselves.
    file(GLOB_RECURSE binaries "${root}/bin/*" "${root}/*.so" "${root}/*.so.*")
    foreach(binary IN LISTS binaries)
        if(NOT IS_SYMLINK "${binary}")
            file(RPATH_REMOVE FILE "${binary}")
        endif()
    endforeach()
endforeach()
