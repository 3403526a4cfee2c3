# One folder is one target: a static library that exposes only its own folder as include path.

set(TAMSEL_WARNINGS -Wall -Wextra -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Woverloaded-virtual -Werror)

function(tamsel_settings target)
    target_compile_options(${target} PRIVATE ${TAMSEL_WARNINGS})
    target_compile_definitions(${target} PRIVATE QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII
                               QT_NO_FOREACH QT_NO_URL_CAST_FROM_STRING QT_STRICT_ITERATORS QT_USE_QSTRINGBUILDER)
endfunction()

# A new source file makes CMake run again, but not moc: forgetting when it last ran does.
function(tamsel_moc_again target)
    file(REMOVE ${CMAKE_CURRENT_BINARY_DIR}/${target}_autogen/timestamp)
endfunction()

# tamsel_library(name PCH core|gui|widgets LINKS public... PRIVATE_LINKS private...)
function(tamsel_library name)
    cmake_parse_arguments(ARG "" "PCH" "LINKS;PRIVATE_LINKS" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
    list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")
    add_library(${name} STATIC ${sources})
    set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
    tamsel_moc_again(${name})
    target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
    target_link_libraries(${name} PUBLIC ${ARG_LINKS} PRIVATE ${ARG_PRIVATE_LINKS})
    tamsel_settings(${name})
    target_precompile_headers(${name} PRIVATE ${CMAKE_SOURCE_DIR}/cmake/pch-${ARG_PCH}.h)
endfunction()

# tamsel_tests(folder LINKS extra...): one test executable that links the folder it tests and nothing above it.
function(tamsel_tests folder)
    cmake_parse_arguments(ARG "" "" "LINKS" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
    if(NOT sources)
        return()
    endif()
    add_executable(${folder}_tests ${sources})
    tamsel_moc_again(${folder}_tests)
    target_link_libraries(${folder}_tests PRIVATE ${folder} test_support ${ARG_LINKS})
    tamsel_settings(${folder}_tests)
    target_precompile_headers(${folder}_tests PRIVATE ${CMAKE_SOURCE_DIR}/cmake/pch-test.h)
    target_compile_definitions(${folder}_tests PRIVATE TEST_SOURCE_DIR="${CMAKE_CURRENT_SOURCE_DIR}")
    add_test(NAME ${folder} COMMAND ${folder}_tests)
    set_tests_properties(${folder} PROPERTIES TIMEOUT 600)
endfunction()
