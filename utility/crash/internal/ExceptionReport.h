#pragma once

#include "utility/platform/ExceptionRecord.h"

#include <boost/filesystem/path.hpp>

#include <functional>

namespace utility::detail
{

/// Writes the report of a fault here and now, of the process that the services for symbols and for the crashed process
/// stand for. Gives the file that it opened, which a report that could not go on has too; empty if there is none.
///
/// Runs within a fault. It takes no lock of its own and allocates, as do the services; nothing here guards it against
/// a second fault. On Linux the process starts another program that calls this, whose memory and locks are sound.
///
/// `opened` is given the file ahead of all that may have no end or be a second fault, so that what it writes beside the
/// report is there whatever becomes of that.
boost::filesystem::path
WriteExceptionReport(const _EXCEPTION_POINTERS& fault,
                     const std::function<void(const boost::filesystem::path&)>& opened = {}) noexcept;

}
