# The warnings that all of the project's own code is compiled with. Whether a warning is an error is the preset's choice
# (CMAKE_COMPILE_WARNING_AS_ERROR).
add_library(project_warnings INTERFACE)
target_compile_options(project_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wcast-qual -Wcast-align -Wformat=2 -Wundef -Wvla
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast -Wextra-semi>
    $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wduplicated-cond -Wlogical-op -Wuseless-cast>)
