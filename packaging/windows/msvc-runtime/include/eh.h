#pragma once
// Takes the place of mingw-w64's, which expects std::type_info before it is declared.

#include <vcruntime.h>

extern "C" {
typedef void(__cdecl* terminate_handler)();
typedef void(__cdecl* unexpected_handler)();
_CRTIMP __declspec(noreturn) void __cdecl terminate() noexcept;
_CRTIMP terminate_handler __cdecl set_terminate(terminate_handler) noexcept;
_CRTIMP terminate_handler __cdecl _get_terminate();
_VCRTIMP void __cdecl unexpected();
_VCRTIMP unexpected_handler __cdecl set_unexpected(unexpected_handler) noexcept;
_VCRTIMP unexpected_handler __cdecl _get_unexpected();
_VCRTIMP int __cdecl __uncaught_exceptions();
}
