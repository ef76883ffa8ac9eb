# Included by the top CMakeLists.txt in the build of proof/coverage.sh: counts how often each line of the program's own
# folders runs.
add_compile_options(--coverage -fprofile-update=atomic
    "-fprofile-filter-files=^${PROJECT_SOURCE_DIR}/(app|ui|install|checks|core)/")
add_link_options(--coverage)

# The counts are written when a program ends normally. This one writes them also where it terminates itself.
add_library(terminating_process STATIC "${CMAKE_CURRENT_LIST_DIR}/TerminatingProcess.cpp")
link_libraries(terminating_process)
add_link_options(-Wl,--wrap=__imp_TerminateProcess)
