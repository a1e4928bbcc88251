# Compiler settings shared by everything that is built here.
add_library(zel_opcoes INTERFACE)
target_compile_options(zel_opcoes INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
    $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wnon-virtual-dtor>
    # Where it optimizes, g++ 12 sees an overlap in "text" + std::string that is none.
    $<$<AND:$<CONFIG:Release>,$<COMPILE_LANG_AND_ID:CXX,GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>
    # A fused multiply-add would change the last digit of a tax on some processors.
    -ffp-contract=off)
if(ZEL_WERROR)
    target_compile_options(zel_opcoes INTERFACE -Werror)
endif()
if(ZEL_SANITIZE)
    target_compile_options(zel_opcoes INTERFACE
        -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(zel_opcoes INTERFACE -fsanitize=address,undefined)
endif()
if(ZEL_FUZZ)
    # The libraries tell the fuzzer where they have been; only the targets link its main.
    target_compile_options(zel_opcoes INTERFACE -fsanitize=fuzzer-no-link)
    target_link_options(zel_opcoes INTERFACE -fsanitize=fuzzer-no-link)
endif()
