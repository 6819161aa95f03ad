# vantle_check_layer(library): links every object of `library` into a small program together with
# only the libraries it declares. A call into a layer it does not link (a service calling a widget,
# the model calling a service) leaves a symbol unresolved, and the build fails there.
function(vantle_check_layer library)
  set(check ${library}_layer_check)
  add_executable(${check} "${PROJECT_SOURCE_DIR}/cmake/layer_check.cpp")
  target_link_libraries(${check} PRIVATE "$<LINK_LIBRARY:WHOLE_ARCHIVE,${library}>")
  set_target_properties(${check} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/layers")
endfunction()
