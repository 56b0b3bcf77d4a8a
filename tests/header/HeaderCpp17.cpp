// The public header as C++17, with the service class.
#include "Header.c"

#include <type_traits>

static_assert(__cplusplus < 202000L, "meant to be compiled as C++17");
static_assert(std::is_same<ZPService, KRX::Services::Service>::value, "");
static_assert(std::is_abstract<ZPService>::value && std::has_virtual_destructor<ZPService>::value, "");
