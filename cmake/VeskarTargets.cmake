# SPDX-License-Identifier: Apache-2.0
# How veskar's own targets are compiled. None of this is exported to users.

# The warnings for veskar's code. Dependencies are included as SYSTEM, which excludes them.
function(veskar_set_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
                                           $<$<BOOL:${VESKAR_WERROR}>:-Werror>)
  # GCC takes the sources of a unity build for headers, where it warns of unnamed namespaces.
  target_compile_options(
    ${target}
    PRIVATE $<$<AND:$<CXX_COMPILER_ID:GNU>,$<BOOL:$<TARGET_PROPERTY:UNITY_BUILD>>>:-Wno-subobject-linkage>)
endfunction()

# Excludes sources from unity builds (CMAKE_UNITY_BUILD) whose unnamed namespaces contain names that
# occur in others of the target, too.
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

# Lets what is installed into a directory below the prefix find the libraries wherever the prefix is
# moved to. Called behind its install().
function(veskar_install_rpath target directory component)
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "STATIC_LIBRARY")
    return()
  endif()
  file(RELATIVE_PATH libraries "${CMAKE_INSTALL_PREFIX}/${directory}"
       "${CMAKE_INSTALL_FULL_LIBDIR}")
  string(REGEX REPLACE "/+$" "" origin "$ORIGIN/${libraries}")
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "${origin}")
  # The loader searches /usr by default, and packages should not set a run path.
  set(file "$<TARGET_FILE_NAME:${target}>")
  install(
    CODE "if(CMAKE_INSTALL_PREFIX MATCHES \"^/usr/?$|/_CPack_Packages/.*/usr$\")
      file(RPATH_REMOVE FILE
           \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${directory}/${file}\")
    endif()"
    COMPONENT ${component})
endfunction()

# Installs a program.
function(veskar_install_program target)
  install(TARGETS ${target} RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tools)
  veskar_install_rpath(${target} "${CMAKE_INSTALL_BINDIR}" tools)
endfunction()

# Results must not depend on whether a processor has fused multiply-add.
function(veskar_set_arithmetic target)
  target_compile_options(${target} PRIVATE -ffp-contract=off)
endfunction()
