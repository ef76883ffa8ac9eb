# Lets a program load libraries when one of their functions is first called, instead of with the program: see
# app/DelayLoading.h. mingw-w64 comes without import libraries for that, so they are made from those that it has.
function(delay_load target)
    set(folder "${CMAKE_CURRENT_BINARY_DIR}/delay-loading")
    # The linker sorts what is imported by these names: from the build's folder, so that its place changes nothing.
    file(RELATIVE_PATH linked_folder "${CMAKE_BINARY_DIR}" "${folder}")
    file(MAKE_DIRECTORY "${folder}")
    foreach(library IN LISTS ARGN)
        execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-file-name=lib${library}.a
            OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
        execute_process(COMMAND "${CMAKE_DLLTOOL}" --identify "${file}"
            OUTPUT_VARIABLE name OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
        execute_process(COMMAND "${CMAKE_NM}" --extern-only --defined-only "${file}"
            OUTPUT_VARIABLE symbols ERROR_QUIET COMMAND_ERROR_IS_FATAL ANY)
        string(REGEX MATCHALL " T [^\n]+" functions "${symbols}")
        list(TRANSFORM functions REPLACE "^ T " "")
        list(JOIN functions "\n" functions)
        file(WRITE "${folder}/${library}.def" "LIBRARY ${name}\nEXPORTS\n${functions}\n")
        execute_process(COMMAND "${CMAKE_DLLTOOL}" --input-def ${library}.def --output-delaylib ${library}.a
            WORKING_DIRECTORY "${folder}" COMMAND_ERROR_IS_FATAL ANY)
        # Under the name that is linked: ours, and then for what is no import, as the classes of GDI+, the other one.
        file(WRITE "${folder}/lib${library}.a" "INPUT(\"${linked_folder}/${library}.a\" \"${file}\")\n")
    endforeach()
    target_link_options(${target} PRIVATE "-L${linked_folder}")
    # Otherwise they would call the one of mingw-w64, which searches everywhere.
    target_link_options(${target} PRIVATE -Wl,--undefined=LoadDelayed -Wl,--defsym=__delayLoadHelper2=LoadDelayed)
endfunction()
