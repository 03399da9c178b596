# AddressSanitizer + UndefinedBehaviorSanitizer for the whole build. Any UB
# report aborts the test that caused it instead of scrolling past.
if(ORRERY_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer
                      -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()
