#define FMT "Hidden %d"
void f(int n) {
  atr(FMT, n, TPXBasStringMode(false));
  atr_raw("Cut here, TPXBasStringMode(false));
