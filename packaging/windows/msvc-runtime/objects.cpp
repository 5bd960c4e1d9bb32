// The part of Visual C++'s runtime that is linked into each module, except for the entry points. What
// clang's code refers to has fixed names: static and thread-local objects, and operator new. All else is
// imported from vcruntime140.dll and ucrtbase.dll.

#include "module.h"

#include <climits>
#include <cstdlib>
#include <new>
#include <typeinfo>

extern "C" {

// Functions of ucrtbase.dll.
_CRTIMP void __cdecl _initterm(Initialiser*, Initialiser*);
_CRTIMP int __cdecl _initterm_e(CInitialiser*, CInitialiser*);
_CRTIMP int __cdecl _callnewh(size_t);
struct OnExitTable {
  void* begin;
  void* end;
  void* capacity;
};
_CRTIMP int __cdecl _initialize_onexit_table(OnExitTable*);
_CRTIMP int __cdecl _register_onexit_function(OnExitTable*, CInitialiser);
_CRTIMP int __cdecl _execute_onexit_table(OnExitTable*);

// Where a module uses floating point, it refers to this.
int _fltused = 0x9875;

// The linker sorts sections by the text after the `$`, so these are the bounds of the lists of
// initialisers: of C (.CRT$XI), of C++ (.CRT$XC), of thread-local objects (.CRT$XD) and the callbacks of
// the loader for threads (.CRT$XL).
#pragma section(".CRT$XCA", long, read)
#pragma section(".CRT$XCZ", long, read)
#pragma section(".CRT$XIA", long, read)
#pragma section(".CRT$XIZ", long, read)
#pragma section(".CRT$XDA", long, read)
#pragma section(".CRT$XDZ", long, read)
#pragma section(".CRT$XLA", long, read)
#pragma section(".CRT$XLC", long, read)
#pragma section(".CRT$XLZ", long, read)
#pragma section(".rdata$T", long, read)
#define VESK_IN(name) __declspec(allocate(name))
VESK_IN(".CRT$XIA") CInitialiser __xi_a[] = {nullptr};
VESK_IN(".CRT$XIZ") CInitialiser __xi_z[] = {nullptr};
VESK_IN(".CRT$XCA") Initialiser __xc_a[] = {nullptr};
VESK_IN(".CRT$XCZ") Initialiser __xc_z[] = {nullptr};
VESK_IN(".CRT$XDA") Initialiser __xd_a[] = {nullptr};
VESK_IN(".CRT$XDZ") Initialiser __xd_z[] = {nullptr};

// Thread-local data. The loader copies it for each thread and sets _tls_index.
unsigned long _tls_index = 0;
__declspec(allocate(".tls")) char _tls_start = 0;
__declspec(allocate(".tls$ZZZ")) char _tls_end = 0;
VESK_IN(".CRT$XLA") PIMAGE_TLS_CALLBACK __xl_a = nullptr;
VESK_IN(".CRT$XLZ") PIMAGE_TLS_CALLBACK __xl_z = nullptr;
VESK_IN(".rdata$T")
extern const IMAGE_TLS_DIRECTORY64 _tls_used = {reinterpret_cast<ULONGLONG>(&_tls_start),
                                                reinterpret_cast<ULONGLONG>(&_tls_end),
                                                reinterpret_cast<ULONGLONG>(&_tls_index),
                                                reinterpret_cast<ULONGLONG>(&__xl_a + 1),
                                                0,
                                                {}};
}  // extern "C"

// All type information refers to the table of virtual functions of type_info, which clang leaves to the
// runtime. Its one function is the destructor, and no code destroys type information.
extern const void* const typeInfoTable[] __asm__("??_7type_info@@6B@");
const void* const typeInfoTable[] = {nullptr};

struct __type_info_node {
  alignas(16) SLIST_HEADER names;
};
__type_info_node __type_info_root_node{};

namespace {

// The functions that the module calls at its end.
OnExitTable onExitTable{};

// Destructors of thread-local objects, in the order in which their construction ended.
struct ThreadExit {
  ThreadExit* next;
  Initialiser destroy;
};
thread_local ThreadExit* threadExits = nullptr;

void endThread() {
  while (threadExits != nullptr) {
    ThreadExit* const last = threadExits;
    threadExits = last->next;
    last->destroy();
    std::free(last);
  }
}

void WINAPI threadCallback(void*, DWORD reason, void*) {
  if (reason == DLL_THREAD_DETACH || reason == DLL_PROCESS_DETACH) endThread();
}

// Guards of static objects in functions are 0 before and -1 during the construction, and later the
// number of the construction that ended.
constexpr int kBeing = -1;
constexpr int kFirstEpoch = INT_MIN;
SRWLOCK guardLock = SRWLOCK_INIT;
CONDITION_VARIABLE guardEnd = CONDITION_VARIABLE_INIT;
int lastEpoch = kFirstEpoch;

}  // namespace

extern "C" {

VESK_IN(".CRT$XLC") PIMAGE_TLS_CALLBACK vesk_thread_callback = threadCallback;

int __cdecl atexit(Initialiser function) {
  return _register_onexit_function(&onExitTable, reinterpret_cast<CInitialiser>(function));
}

bool vesk_begin_module() {
  _initialize_onexit_table(&onExitTable);
  if (_initterm_e(__xi_a, __xi_z) != 0) return false;
  _initterm(__xc_a, __xc_z);
  return true;
}

void __cdecl vesk_end_module() { _execute_onexit_table(&onExitTable); }

// Thread-local objects with a constructor: each access calls it where __tls_guard is unset.
__declspec(thread) bool __tls_guard = false;

void __cdecl __dyn_tls_on_demand_init() noexcept {
  if (__tls_guard) return;
  __tls_guard = true;
  for (Initialiser* construct = __xd_a + 1; construct != __xd_z; ++construct) {
    if (*construct != nullptr) (*construct)();
  }
}

int __cdecl __tlregdtor(Initialiser destroy) {
  auto* const added = static_cast<ThreadExit*>(std::malloc(sizeof(ThreadExit)));
  if (added == nullptr) std::abort();
  *added = {threadExits, destroy};
  threadExits = added;
  return 0;
}

// A thread compares its own epoch with a guard, and asks only if the guard is newer.
__declspec(thread) int _Init_thread_epoch = kFirstEpoch;

void __cdecl _Init_thread_header(int* guard) {
  AcquireSRWLockExclusive(&guardLock);
  while (*guard == kBeing) SleepConditionVariableSRW(&guardEnd, &guardLock, INFINITE, 0);
  if (*guard == 0) {
    *guard = kBeing;
  } else {
    _Init_thread_epoch = lastEpoch;
  }
  ReleaseSRWLockExclusive(&guardLock);
}

void __cdecl _Init_thread_footer(int* guard) {
  AcquireSRWLockExclusive(&guardLock);
  *guard = ++lastEpoch;
  _Init_thread_epoch = lastEpoch;
  ReleaseSRWLockExclusive(&guardLock);
  WakeAllConditionVariable(&guardEnd);
}

void __cdecl _Init_thread_abort(int* guard) {
  AcquireSRWLockExclusive(&guardLock);
  *guard = 0;
  ReleaseSRWLockExclusive(&guardLock);
  WakeAllConditionVariable(&guardEnd);
}

}  // extern "C"

void* operator new(size_t size) {
  for (;;) {
    if (void* const result = std::malloc(size); result != nullptr) return result;
    if (_callnewh(size) == 0) throw std::bad_alloc();
  }
}
void* operator new(size_t size, const std::nothrow_t&) noexcept { return std::malloc(size); }
void* operator new[](size_t size) { return operator new(size); }
void* operator new[](size_t size, const std::nothrow_t&) noexcept { return std::malloc(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }

void* operator new(size_t size, std::align_val_t alignment) {
  void* const result = _aligned_malloc(size, static_cast<size_t>(alignment));
  if (result == nullptr) throw std::bad_alloc();
  return result;
}
void operator delete(void* memory, std::align_val_t) noexcept { _aligned_free(memory); }
void operator delete(void* memory, size_t, std::align_val_t) noexcept { _aligned_free(memory); }
