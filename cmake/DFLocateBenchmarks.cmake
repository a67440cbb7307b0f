# The kind of target that measures speed. Included only where such programs are built.

find_package(benchmark 1.7 REQUIRED)
find_package(Boost 1.74 REQUIRED)

# dfl_benchmark(<subject> SOURCES <files> LIBRARIES <targets>)
#
# A program bench_<subject> that measures speed with Google Benchmark, built by the target "benchmarks". Its goals
# stand in benchmarks/goals.csv.
function(dfl_benchmark subject)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  set(name bench_${subject})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}/benchmarks")
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} benchmark::benchmark)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/benchmarks")
  add_dependencies(benchmarks ${name})
  set_property(TARGET benchmarks APPEND PROPERTY SUBJECTS ${subject})
endfunction()
