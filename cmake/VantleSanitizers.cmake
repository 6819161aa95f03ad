# With VANTLE_SANITIZE every target in the tree is built with ASan and UBSan, so the
# library, the executable and the tests agree on the runtime.
if(VANTLE_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()
