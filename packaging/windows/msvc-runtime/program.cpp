// The entry point of a program.

#include "module.h"

#include <cstdlib>

extern "C" {

_CRTIMP int __cdecl _configure_narrow_argv(int);
_CRTIMP int __cdecl _initialize_narrow_environment();
_CRTIMP char** __cdecl _get_initial_narrow_environment();
_CRTIMP void __cdecl _set_app_type(int);
_CRTIMP int* __cdecl __p___argc();
_CRTIMP char*** __cdecl __p___argv();
_CRTIMP int __cdecl _crt_atexit(Initialiser);

int main(int argc, char** argv, char** environment);

void mainCRTStartup() {
  constexpr int kConsole = 1;
  constexpr int kWithoutWildcards = 1;
  _set_app_type(kConsole);
  _configure_narrow_argv(kWithoutWildcards);
  _initialize_narrow_environment();
  _crt_atexit(vesk_end_module);
  if (!vesk_begin_module()) ExitProcess(255);
  std::exit(main(*__p___argc(), *__p___argv(), _get_initial_narrow_environment()));
}

}  // extern "C"
