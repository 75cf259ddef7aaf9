// aio_stdstreams.cpp: the standard stream objects.
//
// At exit the C++ static destructors of the library run before its unload hook, and the
// tear-downs of other modules that run from that hook may still write to aio_cerr. So the
// objects are never destroyed: each lives in a union whose destructor does nothing, and is
// built by constexpr constructors at compile time (constant initialisation), so it is usable,
// unattached, even before any dynamic initialiser of any module has run. The exported names
// are references bound to them, also constant-initialised.
#include "aio_stdstreams.h"

#if defined(__clang__)
#define AIO_CONSTINIT [[clang::require_constant_initialization]]
#else
#define AIO_CONSTINIT __constinit
#endif

namespace {

template <class T>
union NeverDestroyed {
  constexpr NeverDestroyed() : value() {}
  ~NeverDestroyed() {}
  T value;
};

AIO_CONSTINIT NeverDestroyed<aio_istream> g_cin;
AIO_CONSTINIT NeverDestroyed<aio_ostream> g_cout;
AIO_CONSTINIT NeverDestroyed<aio_ostream> g_cerr;

}  // namespace

AIO_CONSTINIT aio_istream& aio_cin = g_cin.value;
AIO_CONSTINIT aio_ostream& aio_cout = g_cout.value;
AIO_CONSTINIT aio_ostream& aio_cerr = g_cerr.value;
