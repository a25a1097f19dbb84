# Headers of other projects, from a folder that holds nothing else: those of the host's C library must
# not be seen.
function(vesk_third_party name type)
    if(NOT TARGET ${name})
        add_library(${name} ${type} ${ARGN})
        set(scope PUBLIC)
        if(type STREQUAL INTERFACE)
            set(scope INTERFACE)
        endif()
        target_include_directories(${name} SYSTEM ${scope} "${VESK_THIRD_PARTY}")
    endif()
endfunction()
