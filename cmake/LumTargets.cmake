# Flags that every target of the project shares, hung on two interface targets:
# lumcore_warnings and lumcore_sanitizers. Both stop at the build tree; neither is installed.

add_library(lumcore_warnings INTERFACE)
target_compile_options(lumcore_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion
    # g++ 12 sees overlapping copies in std::string code that it has inlined, where there are none.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
    $<$<BOOL:${LUM_WARNINGS_AS_ERRORS}>:-Werror>)

add_library(lumcore_sanitizers INTERFACE)
if(LUM_SANITIZE STREQUAL "address")
    set(lum_sanitizer_flags -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
elseif(LUM_SANITIZE STREQUAL "thread")
    set(lum_sanitizer_flags -fsanitize=thread -fno-omit-frame-pointer)
elseif(NOT LUM_SANITIZE STREQUAL "")
    message(FATAL_ERROR "LUM_SANITIZE is '${LUM_SANITIZE}'; it may be empty, address or thread")
endif()
if(LUM_BUILD_FUZZ)
    # Coverage instrumentation for the library itself; the targets add the fuzzing engine.
    list(APPEND lum_sanitizer_flags -fsanitize=fuzzer-no-link)
endif()
target_compile_options(lumcore_sanitizers INTERFACE ${lum_sanitizer_flags})
target_link_options(lumcore_sanitizers INTERFACE ${lum_sanitizer_flags})

# lum_settings(<target>): what each of our own programs is compiled with.
function(lum_settings target)
    target_compile_features(${target} PRIVATE cxx_std_20)
    target_link_libraries(${target} PRIVATE
        $<BUILD_INTERFACE:lumcore_warnings> $<BUILD_INTERFACE:lumcore_sanitizers>)
    # Reports name source files from the project's root on.
    target_compile_options(${target} PRIVATE -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)
endfunction()
