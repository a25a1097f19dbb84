# What all targets share: language level, the rules of floating point, warnings and sanitizers.

set(VESK_INCLUDE_ROOT "${PROJECT_SOURCE_DIR}/src")
set(VESK_GENERATED_ROOT "${PROJECT_BINARY_DIR}/generated")
configure_file("${VESK_INCLUDE_ROOT}/vesk/Version.h.in"
    "${VESK_GENERATED_ROOT}/vesk/Version.h" @ONLY)

add_library(vesk_private INTERFACE)
target_compile_features(vesk_private INTERFACE cxx_std_20)
target_compile_options(vesk_private INTERFACE
    # Every product is rounded before it is added: the same bits on every CPU.
    -ffp-contract=off
    -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Woverloaded-virtual
    $<$<CXX_COMPILER_ID:GNU>:-Wshadow=local>
    # g++ 12 sees overlaps that cannot be in concatenations of std::string at -O3.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
    $<$<BOOL:${VESK_WARNINGS_AS_ERRORS}>:-Werror>)
target_compile_definitions(vesk_private INTERFACE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
if(VESK_SANITIZE)
    target_compile_options(vesk_private INTERFACE
        -fsanitize=${VESK_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(vesk_private INTERFACE -fsanitize=${VESK_SANITIZE})
endif()
# What surrounds the two shared objects: with sanitizers most of a build's time would go into
# optimising it, and into checking pointers whose misuse shows anyway.
add_library(vesk_surroundings INTERFACE)
if(VESK_SANITIZE)
    target_compile_options(vesk_surroundings INTERFACE -Og -fno-sanitize=null,vptr,alignment)
endif()
if(VESK_COVERAGE)
    target_compile_options(vesk_private INTERFACE --coverage -fprofile-update=atomic)
    target_link_options(vesk_private INTERFACE --coverage)
endif()

# What is shipped: no conversion that loses bits unseen, no name before another; in optimised builds the stack, copies of the
# C library and the tables of the linker are guarded. WebAssembly guards them itself.
add_library(vesk_shipped INTERFACE)
target_compile_options(vesk_shipped INTERFACE
    -Wconversion -Wshadow)
if(NOT VESK_SANITIZE AND NOT EMSCRIPTEN)
    set(optimised "$<CONFIG:Release,RelWithDebInfo,MinSizeRel>")
    target_compile_options(vesk_shipped INTERFACE
        "$<${optimised}:-fstack-protector-strong;-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
    target_link_options(vesk_shipped INTERFACE "$<${optimised}:LINKER:-z,relro,-z,now>")
endif()

# vesk_library(<name> <exported name> SHARED|STATIC <source>...): a library of the project.
function(vesk_library name exported type)
    add_library(${name} ${type} ${ARGN})
    add_library(Vesk::${exported} ALIAS ${name})
    target_link_libraries(${name} PRIVATE
        $<BUILD_INTERFACE:vesk_private> $<BUILD_INTERFACE:vesk_shipped>)
    target_compile_features(${name} INTERFACE cxx_std_17)
    target_include_directories(${name} PUBLIC
        $<BUILD_INTERFACE:${VESK_INCLUDE_ROOT}> $<BUILD_INTERFACE:${VESK_GENERATED_ROOT}>)
    set_target_properties(${name} PROPERTIES
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        EXPORT_NAME ${exported})
endfunction()

# vesk_shared(<name> <exported name> <source>...): a shared object that exports only Vesk:: names.
function(vesk_shared name exported)
    set(map "${PROJECT_SOURCE_DIR}/cmake/exports.map")
    vesk_library(${name} ${exported} SHARED ${ARGN})
    target_link_options(${name} PRIVATE
        "LINKER:--version-script=${map}" "LINKER:--as-needed")
    if(NOT VESK_SANITIZE)
        # A sanitizer's own functions are defined by the program.
        target_link_options(${name} PRIVATE "LINKER:--no-undefined")
    endif()
    set_target_properties(${name} PROPERTIES
        LINK_DEPENDS "${map}"
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR})
endfunction()
