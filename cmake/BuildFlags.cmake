# The one place for language level, warnings, hardening and the Windows headers' settings.
add_library(vellumkit_build_flags INTERFACE)

# Nothing here computes for long. Not among the options below: the tests have another one.
set(CMAKE_CXX_FLAGS_RELEASE "-Os -DNDEBUG")

target_compile_features(vellumkit_build_flags INTERFACE cxx_std_20)

target_compile_definitions(vellumkit_build_flags INTERFACE
    UNICODE _UNICODE    # the W forms of every Windows function, wide texts in _com_error
    NOMINMAX            # std::min and std::max, not macros
    STRICT              # handle kinds are distinct types
    WINVER=0x0601 _WIN32_WINNT=0x0601) # runs on Windows 7 and later

# Not -Wnon-virtual-dtor: COM interfaces have no virtual destructor, since it would take a slot. Another compiler gets
# its defaults.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(vellumkit_build_flags INTERFACE
        -Wall -Wextra -Wpedantic -Werror
        -Wcast-align -Wconversion -Wdouble-promotion -Wduplicated-branches -Wduplicated-cond -Wextra-semi -Wformat=2
        -Wlogical-op -Wmissing-declarations -Wold-style-cast -Woverloaded-virtual -Wshadow
        -Wsign-conversion -Wundef
        -fstack-protector-strong
        -ffunction-sections -fdata-sections
        # Symbols for a file of their own, and the same bytes wherever it is built.
        $<$<CONFIG:Release>:-g>
        $<$<CONFIG:Release>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=/vellumkit>
        $<$<CONFIG:Release>:-ffile-prefix-map=${PROJECT_BINARY_DIR}=/vellumkit/build>)
    target_link_options(vellumkit_build_flags INTERFACE
        -static
        $<$<BOOL:$<TARGET_PROPERTY:WIN32_EXECUTABLE>>:-municode> # the entry point is wWinMain
        -fstack-protector-strong # links the library of its run-time part
        -Wl,--dynamicbase -Wl,--high-entropy-va -Wl,--nxcompat
        -Wl,--gc-sections
        -Wl,--no-insert-timestamp # the same bytes whenever it is built
        $<$<AND:$<CONFIG:Release>,$<NOT:$<BOOL:$<TARGET_PROPERTY:SYMBOLS_APART>>>>:-s>)
endif()
