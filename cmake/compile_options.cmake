# Options every target of the project is built with.

function(vrl_compile_options target)
    # Results are the same on every machine: no fused multiply-add, no reordering.
    target_compile_options(${target} PRIVATE
        -ffp-contract=off
        -fno-math-errno  # nothing asks for it after a square root, which need not be a call then
        -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wdouble-promotion -Wshadow
        -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast)
    if(VRL_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
    if(VRL_SANITIZE)
        target_compile_options(${target} PRIVATE -fsanitize=${VRL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE -fsanitize=${VRL_SANITIZE})
    endif()
endfunction()
