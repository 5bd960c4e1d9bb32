# Compiles a shared library as an extension module of MFC. MFC's header is the first one, since it
# includes <windows.h> in its own way.
function(vesk_use_mfc target)
  target_compile_definitions(${target} PUBLIC FILESYSTEM_MFC PRIVATE _AFXDLL _AFXEXT NOMINMAX=1)
  if(MSVC)
    target_compile_options(${target} PRIVATE /FIafxwin.h)
  else()
    # MFC's allocation may return null, which Visual C++ expects by default.
    target_compile_options(${target} PRIVATE -includeafxwin.h -fcheck-new)
  endif()
endfunction()

# Sets how each target of this project is compiled, whatever the project that it is part of sets
# for its own targets: C++20 or later without extensions, and only exported symbols visible.
function(vesk_configure target)
  target_compile_features(${target} PRIVATE cxx_std_20)
  # GNU's extensions define `linux` as a macro.
  set_target_properties(${target} PROPERTIES
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON)
  if(VESK_WARNINGS)
    target_compile_options(${target} PRIVATE
      "$<IF:$<CXX_COMPILER_ID:MSVC>,/W4;/WX,-Wall;-Wextra;-Wconversion;-Werror>")
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
      # It warns of overlaps in std::string's own code that cannot happen (GCC bug 105329).
      target_compile_options(${target} PRIVATE -Wno-restrict)
    endif()
  endif()
  if(MSVC)
    # Conforming mode, source text in UTF-8, and no warnings of standard functions.
    target_compile_options(${target} PRIVATE /permissive- /utf-8)
    target_compile_definitions(${target} PRIVATE _CRT_SECURE_NO_WARNINGS)
  endif()
  if(VESK_SANITIZE)
    target_compile_options(${target} PRIVATE
      -fsanitize=${VESK_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${VESK_SANITIZE})
  endif()
endfunction()
