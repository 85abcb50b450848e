# SPDX-License-Identifier: Apache-2.0
# How veskar's own targets are compiled. Nothing of this is exported to users.

# The warnings that veskar's code is held to. Dependencies come as SYSTEM and stay out of it.
function(veskar_set_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
                                           $<$<BOOL:${VESKAR_WERROR}>:-Werror>)
  # GCC takes the sources of a unity build for headers, where unnamed namespaces are a mistake.
  target_compile_options(
    ${target}
    PRIVATE $<$<AND:$<CXX_COMPILER_ID:GNU>,$<BOOL:$<TARGET_PROPERTY:UNITY_BUILD>>>:-Wno-subobject-linkage>)
endfunction()

# Sources that stay out of unity builds (CMAKE_UNITY_BUILD), because their unnamed namespaces have
# names that others in the target have, too.
function(veskar_compile_alone target)
  set_source_files_properties(${ARGN} TARGET_DIRECTORY ${target}
                              PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()

# Sources share most of what they include and instantiate: together they compile in a fraction of the
# time that they take one by one.
function(veskar_compile_quickly target batch)
  if(VESKAR_QUICK_BUILD)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE ${batch})
  endif()
endfunction()

# Compiles a test program, which need not be quick: what it calls is compiled as it is shipped.
function(veskar_compile_test target)
  veskar_compile_quickly(${target} 16)
  target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O1>)
endfunction()

# Installs a program that finds the library wherever the prefix is moved to.
function(veskar_install_program target)
  file(RELATIVE_PATH libraries "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN/${libraries}")
  install(TARGETS ${target} RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tools)
  # The loader looks into /usr anyway, and a package should not say so.
  install(
    CODE "if(CMAKE_INSTALL_PREFIX MATCHES \"^/usr/?$|/_CPack_Packages/.*/usr$\")
      file(RPATH_REMOVE FILE
           \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/$<TARGET_FILE_NAME:${target}>\")
    endif()"
    COMPONENT tools)
endfunction()

# Results must not depend on whether a processor has fused multiply-add.
function(veskar_set_arithmetic target)
  target_compile_options(${target} PRIVATE -ffp-contract=off)
endfunction()
