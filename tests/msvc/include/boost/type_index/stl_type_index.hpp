// Hides from Boost that std::type_info of Visual C++ has a member raw_name(), which libc++'s lacks.
#pragma push_macro("_MSC_VER")
#undef _MSC_VER
#include_next <boost/type_index/stl_type_index.hpp>
#pragma pop_macro("_MSC_VER")
