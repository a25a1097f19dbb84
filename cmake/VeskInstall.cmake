# Installation: the libraries, their public headers, the program, a CMake package and pkg-config
# files, documentation. An installed tree can be moved as a whole.
#
#   cmake --install <build> --component runtime         shared objects
#   cmake --install <build> --component development     headers, links, archive, package files
#   cmake --install <build> --component tools           program, manual pages, completion
#   cmake --install <build> --component documentation   README and docs

include(CMakePackageConfigHelpers)

# A project that takes this one in decides for itself what it installs.
option(VESK_INSTALL "Make the install rules" ${PROJECT_IS_TOP_LEVEL})
if(NOT VESK_INSTALL)
    return()
endif()

set(vesk_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/VeskHMM")
set(vesk_pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

# The shared objects lie side by side, the program finds them from where it is.
set_property(TARGET HMM APPEND PROPERTY INSTALL_RPATH "$ORIGIN")
install(TARGETS Veskcore HMM
    EXPORT VeskHMMTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
        COMPONENT runtime
        NAMELINK_COMPONENT development
    FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT development
    INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(EXPORT VeskHMMTargets
    NAMESPACE Vesk::
    DESTINATION "${vesk_package_dir}"
    COMPONENT development)

# An export of its own: what the kit's archive depends on is asked only of those who use the kit.
set(vesk_kit_packages)
if(TARGET VeskKit)
    install(TARGETS VeskKit
        EXPORT VeskKitTargets
        ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development
        FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT development)
    install(EXPORT VeskKitTargets
        NAMESPACE Vesk::
        DESTINATION "${vesk_package_dir}"
        COMPONENT development)
    # Whoever links the archive has to link these too; they are named alike in all three places.
    get_target_property(vesk_kit_links VeskKit LINK_LIBRARIES)
    foreach(package IN ITEMS fmt pugixml)
        if("${package}::${package}" IN_LIST vesk_kit_links)
            list(APPEND vesk_kit_packages ${package})
        endif()
    endforeach()
endif()

if(TARGET vesk)
    file(RELATIVE_PATH vesk_bin_to_lib
        "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
    set_property(TARGET vesk APPEND PROPERTY INSTALL_RPATH "$ORIGIN/${vesk_bin_to_lib}")
    install(TARGETS vesk RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tools)
    get_target_property(vesk_pages vesk VESK_PAGES)
    install(DIRECTORY "${vesk_pages}/" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1"
        COMPONENT tools FILES_MATCHING PATTERN "*.1")
    install(FILES "${vesk_pages}/vesk.bash"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" RENAME vesk
        COMPONENT tools)
endif()

configure_package_config_file(
    "${CMAKE_CURRENT_LIST_DIR}/VeskHMMConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/package/VeskHMMConfig.cmake"
    INSTALL_DESTINATION "${vesk_package_dir}"
    NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(
    "${PROJECT_BINARY_DIR}/package/VeskHMMConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)
install(FILES
    "${PROJECT_BINARY_DIR}/package/VeskHMMConfig.cmake"
    "${PROJECT_BINARY_DIR}/package/VeskHMMConfigVersion.cmake"
    DESTINATION "${vesk_package_dir}"
    COMPONENT development)

# pkg-config: paths follow the place of the .pc file.
file(RELATIVE_PATH vesk_pc_to_prefix
    "${CMAKE_INSTALL_PREFIX}/${vesk_pkgconfig_dir}" "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" vesk_pc_to_prefix "${vesk_pc_to_prefix}")
list(TRANSFORM vesk_kit_packages PREPEND ", " OUTPUT_VARIABLE vesk_kit_pc_requires)
list(JOIN vesk_kit_pc_requires "" vesk_kit_pc_requires)
set(vesk_pc_names vesk-hmm)
if(TARGET VeskKit)
    list(APPEND vesk_pc_names vesk-kit)
endif()
foreach(name IN LISTS vesk_pc_names)
    configure_file("${CMAKE_CURRENT_LIST_DIR}/${name}.pc.in"
        "${PROJECT_BINARY_DIR}/package/${name}.pc" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/package/${name}.pc"
        DESTINATION "${vesk_pkgconfig_dir}"
        COMPONENT development)
endforeach()

# The pages keep their places, so that the links between them hold.
set(vesk_doc_dir "${CMAKE_INSTALL_DATADIR}/doc/vesk-hmm")
install(FILES "${PROJECT_SOURCE_DIR}/README.md" "${PROJECT_SOURCE_DIR}/CHANGELOG.md"
        "${PROJECT_SOURCE_DIR}/CONTRIBUTING.md"
    DESTINATION "${vesk_doc_dir}" COMPONENT documentation)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/docs"
    DESTINATION "${vesk_doc_dir}" COMPONENT documentation)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/examples"
    DESTINATION "${vesk_doc_dir}" COMPONENT documentation
    FILES_MATCHING PATTERN "*.cpp" PATTERN "*.sh")
