// TPXOsConverter.h: the process-wide OS-string converter, used by the module's set-up only.
#ifndef TPXOSCONVERTER_H
#define TPXOSCONVERTER_H

namespace kld {

/// Registers the library's converter with mem_ToOs, creating it on the first call. The
/// converter is destroyed when the process exits (or the library is unloaded), after which
/// nothing is registered and later calls register nothing.
void RegisterOsConverter();

}  // namespace kld

#endif  // TPXOSCONVERTER_H
