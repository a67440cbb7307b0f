# The rules every target shares, and the kinds of target this project has.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_AUTOMOC ON)
set(CMAKE_AUTORCC ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# All programs and libraries of a build stand side by side, as an installation has them.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
set(CMAKE_INSTALL_RPATH "$ORIGIN/../lib;$ORIGIN")

include(GNUInstallDirs)

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wsuggest-override
                    -Woverloaded-virtual -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  # Qt's logging macros are called without the arguments that strict C++17 asks for.
  add_compile_options(-Wno-gnu-zero-variadic-macro-arguments)
endif()
# A string-based connect is checked at run time only; implicit text conversions hide encoding mistakes.
add_compile_definitions(QT_DEPRECATED_WARNINGS QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING)
add_link_options(-Wl,--as-needed)

option(DFLOCATE_SANITIZE "Build with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)
if(DFLOCATE_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  # The checks that the sanitizers add keep the compiler from seeing that a variant or optional was set.
  add_compile_options(-Wno-maybe-uninitialized)
  add_link_options(-fsanitize=address,undefined)
endif()

option(DFLOCATE_FUZZ "Build the fuzzers in place of the tests; needs clang" OFF)
if(DFLOCATE_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined,float-cast-overflow -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
else()
  # Where clang sanitizes, libraries leave the sanitizers' own symbols to the program.
  add_link_options(-Wl,-z,defs)
endif()

# dfl_host_library(<name> SOURCES <files> LIBRARIES <targets>)
#
# A shared library of the host layer. Its public headers live in include/<name>/ and are seen only by targets that
# link it. Public headers with moc classes are named in SOURCES like the rest.
function(dfl_host_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_library(${name} SHARED ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC "$<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>"
                                            "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/dflocate-host>")
  target_link_libraries(${name} PUBLIC ${ARG_LIBRARIES} PRIVATE faultpoints)
  string(TOUPPER ${name} upper)
  target_compile_definitions(${name} PRIVATE ${upper}_BUILD)
  # Nobody replaces single functions of these libraries, so what a library calls of its own may be inlined.
  target_compile_options(${name} PRIVATE $<$<NOT:$<CONFIG:Debug>>:-fno-semantic-interposition>)
  install(TARGETS ${name} EXPORT DFLocateHost LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/dflocate-host)
endfunction()

# dfl_test(<name> SOURCES <files> LIBRARIES <targets> [ARGUMENTS <arguments>] [ENVIRONMENT <var=value>...]
#          [LABELS <labels>] [TIMEOUT <s>] [REAL_DISPLAY])
#
# One test program, run by CTest: without a display, or with REAL_DISPLAY in an X display of its own with a window manager.
# It has no session bus: Qt's platform themes would start one, and the program may end in the middle of that.
function(dfl_test name)
  cmake_parse_arguments(ARG "REAL_DISPLAY" "TIMEOUT" "SOURCES;LIBRARIES;ARGUMENTS;ENVIRONMENT;LABELS" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 180)
    if(DFLOCATE_SANITIZE)
      set(ARG_TIMEOUT 540)
    endif()
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} testsupport Qt5::Test)
  target_precompile_headers(${name} REUSE_FROM testsupport)
  # Nearly empty: reading them would be all of its work.
  set_source_files_properties("${CMAKE_CURRENT_BINARY_DIR}/${name}_autogen/mocs_compilation.cpp"
                              PROPERTIES SKIP_PRECOMPILE_HEADERS ON)
  if(DFLOCATE_SANITIZE)
    target_link_libraries(${name} PRIVATE keptscreen)
  endif()
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
  if(ARG_REAL_DISPLAY)
    set(platform xcb)
    add_test(NAME ${name} COMMAND "${CMAKE_SOURCE_DIR}/scripts/with-display.sh" $<TARGET_FILE:${name}>)
  else()
    set(platform offscreen)
    add_test(NAME ${name} COMMAND ${name} ${ARG_ARGUMENTS})
  endif()
  set_tests_properties(
    ${name}
    PROPERTIES TIMEOUT ${ARG_TIMEOUT}
               LABELS "${ARG_LABELS}"
               ENVIRONMENT
               "QT_QPA_PLATFORM=${platform};LC_ALL=C.UTF-8;DBUS_SESSION_BUS_ADDRESS=disabled:;LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/lsan.supp:print_suppressions=0;${ARG_ENVIRONMENT}"
  )
endfunction()
