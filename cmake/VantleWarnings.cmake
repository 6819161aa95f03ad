# vantle_set_warnings(target): the project's warning level, errors when VANTLE_WARNINGS_AS_ERRORS.
function(vantle_set_warnings target)
  if(MSVC)
    target_compile_options(${target} PRIVATE /W4)
  else()
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor
                                             -Wold-style-cast -Wcast-align -Woverloaded-virtual
                                             -Wconversion -Wsign-conversion
                                             -Wimplicit-fallthrough)
  endif()
  if(VANTLE_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE $<IF:$<CXX_COMPILER_ID:MSVC>,/WX,-Werror>)
  endif()
endfunction()
