// TPXBasPrfParamList.cpp: event parameters that store nothing and answer neutrally.
#include "TPXBasPrfAnalysis.h"

namespace {
char kNotAvailable[] = "N/A";
}

TPXBasPrfParamList::TPXBasPrfParamList() = default;
TPXBasPrfParamList::~TPXBasPrfParamList() = default;

TPXBasPrfParamList& TPXBasPrfParamList::clear() { return *this; }

TPXBasPrfParamList& TPXBasPrfParamList::add(int value) {
  expandIntList(value);
  return *this;
}

TPXBasPrfParamList& TPXBasPrfParamList::add(double value) {
  expandDoubleList(value);
  return *this;
}

TPXBasPrfParamList& TPXBasPrfParamList::add(char* text) {
  expandStringList(text);
  return *this;
}

int TPXBasPrfParamList::getInt(int) { return 0; }
double TPXBasPrfParamList::getDouble(int) { return 0.0; }
char* TPXBasPrfParamList::getString(int) { return kNotAvailable; }
int TPXBasPrfParamList::intListLength() { return 0; }
int TPXBasPrfParamList::doubleListLength() { return 0; }
int TPXBasPrfParamList::stringListLength() { return 0; }

void TPXBasPrfParamList::expandIntList(int) {}
void TPXBasPrfParamList::expandDoubleList(double) {}
void TPXBasPrfParamList::expandStringList(char*) {}
