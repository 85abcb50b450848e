# SPDX-License-Identifier: Apache-2.0
# How veskar's own targets are compiled. Nothing of this is exported to users.

# The warnings that veskar's code is held to. Dependencies come as SYSTEM and stay out of it.
function(veskar_set_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
                                           $<$<BOOL:${VESKAR_WERROR}>:-Werror>)
endfunction()

# Sources that stay out of unity builds (CMAKE_UNITY_BUILD), because their unnamed namespaces have
# names that others in the target have, too.
function(veskar_compile_alone target)
  set_source_files_properties(${ARGN} TARGET_DIRECTORY ${target}
                              PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()

# Results must not depend on whether a processor has fused multiply-add.
function(veskar_set_arithmetic target)
  target_compile_options(${target} PRIVATE -ffp-contract=off)
endfunction()
