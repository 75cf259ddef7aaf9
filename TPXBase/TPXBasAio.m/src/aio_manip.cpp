// aio_manip.cpp: format manipulators of the output streams.
#include "aio_manip.h"

aio_ostream& aio_setiosflags(aio_ostream& out, int bits) {
  out.setf(bits, 0);
  return out;
}

aio_ostream& aio_resetiosflags(aio_ostream& out, int bits) {
  out.unsetf(bits);
  return out;
}

aio_ostream& aio_setprecision(aio_ostream& out, int p) {
  out.setprecision(p);
  return out;
}

aio_ostream& aio_setwidth(aio_ostream& out, int w) {
  out.setwidth(w, false);
  return out;
}
