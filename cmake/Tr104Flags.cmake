# Compiler settings shared by every target of the project.
add_compile_options(-Wall -Wextra -Werror)

if(TR104_SANITIZE)
  add_compile_options(-fsanitize=${TR104_SANITIZE} -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TR104_SANITIZE})
  # An undefined-behaviour finding ends the process, whatever UBSAN_OPTIONS says.
  if(TR104_SANITIZE MATCHES "undefined")
    add_compile_options(-fno-sanitize-recover=undefined)
    add_link_options(-fno-sanitize-recover=undefined)
  endif()
endif()

# The library itself: no exceptions, no RTTI, everything hidden unless marked TR104_API.
# The version script additionally keeps any C++ symbol (instantiated templates of the
# standard headers carry default visibility) out of the dynamic symbol table.
function(tr104_library_settings target)
  target_compile_options(${target} PRIVATE
    $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -fvisibility-inlines-hidden>
    -fvisibility=hidden)
  target_compile_definitions(${target} PRIVATE TR104_BUILDING_LIBRARY=1)
  # The device's flash: no MIPS procedure descriptors (.pdr, a debugging aid that strip keeps,
  # about 30 KB) and no code or data that nothing reaches (each function and object in a section
  # of its own, unreferenced ones dropped at link).
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^mips")
    target_compile_options(${target} PRIVATE -Wa,-mno-pdr -ffunction-sections -fdata-sections)
    target_link_options(${target} PRIVATE -Wl,--gc-sections)
  endif()
endfunction()
