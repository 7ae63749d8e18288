#ifndef TUL_LOG_SINKS_H
#define TUL_LOG_SINKS_H

#include "BryMwSpiTrace.h"
#include "TulMwSpiLog_1.h"

/**
 * The framework's log and trace interfaces, looked up at the first record after each attach and then kept. One
 * that was not found is not asked for again until then: a record must not cost a look-up.
 *
 * Any thread. A look-up holds no lock and may itself write records: those see no interface.
 */
namespace Tul::LogSinks {

/** Null when no framework is attached or it has none. One load when it is known. */
const TulMwSpiLog_1* log() noexcept;
const BryMwSpiTrace* trace() noexcept;

/** Drops what was found. */
void forget() noexcept;

}  // namespace Tul::LogSinks

#endif
