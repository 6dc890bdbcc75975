# Read by the engine's own project, to compile it in a third of the time: what calculates is optimised as ever, but not what
# only reads requests and describes models.

function(quicken)
    foreach(target ggml ggml-base ggml-cpu)
        target_compile_options(${target} PRIVATE -O3)
    endforeach()
    set_target_properties(llama-common mtmd PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 8)
    # These refuse to share a file with the rest of their library.
    set_source_files_properties(
        ${PROJECT_SOURCE_DIR}/tools/mtmd/mtmd-helper.cpp ${PROJECT_SOURCE_DIR}/tools/mtmd/mtmd-helper-gen.cpp
        TARGET_DIRECTORY mtmd PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()
cmake_language(DEFER CALL quicken)
