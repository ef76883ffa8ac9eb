# The target "lint" holds the sources to .clang-format and .clang-tidy, the scripts to shellcheck, and the playbook to
# ansible-lint. Each source is analysed again only when it, a header or the configuration has changed. Other versions
# format and warn otherwise.
find_program(CLANG_FORMAT clang-format-14 REQUIRED)
find_program(CLANG_TIDY clang-tidy-14 REQUIRED)
find_program(SHELLCHECK shellcheck REQUIRED)
find_program(ANSIBLE_LINT ansible-lint REQUIRED)
find_program(ANSIBLE_PLAYBOOK ansible-playbook REQUIRED)

function(collect_sources directory result)
    get_property(targets DIRECTORY "${directory}" PROPERTY BUILDSYSTEM_TARGETS)
    foreach(target IN LISTS targets)
        get_target_property(sources ${target} SOURCES)
        foreach(source IN LISTS sources)
            cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY "${PROJECT_SOURCE_DIR}/${directory}" NORMALIZE)
            cmake_path(IS_PREFIX PROJECT_BINARY_DIR "${source}" generated)
            if(NOT generated)
                list(APPEND ${result} "${source}")
            endif()
        endforeach()
    endforeach()
    list(FILTER ${result} INCLUDE REGEX "\\.(cpp|h)$")
    list(REMOVE_DUPLICATES ${result})
    set(${result} "${${result}}" PARENT_SCOPE)
endfunction()

foreach(directory core checks install ui app support
        lab/browser lab/datebookery lab/elevated-installer lab/gallery lab/office lab/onenote
        proof/endurance proof/faults proof/hostile bench resources tests)
    collect_sources(${directory} linted)
endforeach()

list(JOIN linted "\n" lines)
file(WRITE "${PROJECT_BINARY_DIR}/linted.txt" "${lines}\n")
add_custom_target(format
    COMMAND "${CLANG_FORMAT}" --dry-run -Werror --files=linted.txt
    WORKING_DIRECTORY "${PROJECT_BINARY_DIR}"
    COMMENT "Checking the format"
    VERBATIM)

# clang reads the cross compiler's headers, but its own ones for what is built into it.
set(tidy_arguments --quiet -p "${PROJECT_BINARY_DIR}" --extra-arg=--target=x86_64-w64-windows-gnu
    --extra-arg=-nostdlibinc --extra-arg=-Wno-unknown-warning-option
    --extra-arg=-fno-caret-diagnostics # and no count of the warnings that were suppressed
    --extra-arg=-Wreserved-identifier --extra-arg=-Wreserved-macro-identifier)
foreach(directory IN LISTS CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES)
    if(NOT directory MATCHES "/gcc/[^/]*/[^/]*/include(-fixed)?$")
        list(APPEND tidy_arguments "--extra-arg=-isystem${directory}")
    endif()
endforeach()

set(generated_headers "${PROJECT_BINARY_DIR}/core/core/LanguageTable.h" "${PROJECT_BINARY_DIR}/core/core/Product.h"
    "${PROJECT_BINARY_DIR}/lab/onenote/OneNoteLibrary.h")
set(headers ${linted})
list(FILTER headers INCLUDE REGEX "\\.h$")
foreach(source IN LISTS linted)
    if(source MATCHES "\\.cpp$")
        cmake_path(RELATIVE_PATH source BASE_DIRECTORY "${PROJECT_SOURCE_DIR}" OUTPUT_VARIABLE name)
        set(stamp "${PROJECT_BINARY_DIR}/tidy/${name}.clean")
        cmake_path(GET stamp PARENT_PATH folder)
        add_custom_command(OUTPUT "${stamp}"
            COMMAND "${CLANG_TIDY}" ${tidy_arguments} "${source}"
            COMMAND "${CMAKE_COMMAND}" -E make_directory "${folder}"
            COMMAND "${CMAKE_COMMAND}" -E touch "${stamp}"
            DEPENDS onenote-library "${source}" ${headers} ${generated_headers}
                "${PROJECT_SOURCE_DIR}/.clang-tidy" "${PROJECT_SOURCE_DIR}/tests/.clang-tidy"
                "${PROJECT_SOURCE_DIR}/proof/.clang-tidy"
            COMMENT "Analysing ${name}"
            VERBATIM)
        list(APPEND stamps "${stamp}")
    endif()
endforeach()
add_custom_target(tidy DEPENDS ${stamps})

add_custom_target(shellcheck
    COMMAND "${SHELLCHECK}" --external-sources run.sh test.sh lint.sh lab/languages.sh lab/machine.sh
        lab/installation.sh lab/gallery/gallery.sh resources/render-artwork.sh cmake/set-load-configuration.sh
        bench.sh prove.sh proof/coverage.sh proof/endurance.sh proof/faults.sh proof/hostile.sh proof/mutations.sh
        proof/suites.sh release.sh release/assemble.sh release/sign.sh tests/includes.sh tests/program/planting.sh
        tests/release/crash-address.sh tests/release/reproducible.sh tests/release/signature.sh
        tests/release/windows-tests.sh tests/lab/gallery.sh lab/fleet/fleet.sh lab/fleet/machine.sh
        tests/deploy/rehearsal.sh .ci/run
    WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}"
    COMMENT "Checking the scripts"
    VERBATIM)

# A playbook that includes the tasks by name does not know whether their modules exist; one that imports them does.
file(GLOB tasks CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/deploy/windows/*.yml"
    "${PROJECT_SOURCE_DIR}/lab/fleet/machine/*.yml")
list(TRANSFORM tasks PREPEND "    - import_tasks: " OUTPUT_VARIABLE imports)
list(JOIN imports "\n" imports)
file(WRITE "${PROJECT_BINARY_DIR}/tasks.yml" "- hosts: all\n  tasks:\n${imports}\n")
add_custom_target(ansible-lint
    COMMAND "${ANSIBLE_LINT}" --offline --nocolor -q -c deploy/.ansible-lint
        deploy/install.yml deploy/inventory.example.yml ${tasks}
    COMMAND "${ANSIBLE_PLAYBOOK}" --syntax-check --inventory deploy/inventory.example.yml
        "${PROJECT_BINARY_DIR}/tasks.yml"
    WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}"
    COMMENT "Checking the playbook"
    VERBATIM)

add_custom_target(lint)
add_dependencies(lint format tidy shellcheck ansible-lint)
