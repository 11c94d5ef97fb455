#pragma once

// The whole of the library's public interface.

#include "utility/failures/Failures.h"
#include "utility/failures/LibraryFrame.h"
#include "utility/failures/Messages.h"
#include "utility/failures/ResourceString.h"
#include "utility/files/MemoryMappedFile.h"
#include "utility/framework/Exception.h"
#include "utility/framework/FileException.h"
#include "utility/framework/Object.h"
#include "utility/framework/String.h"
#include "utility/logging/DebugStream.h"
#include "utility/logging/LogMessages.h"
#include "utility/logging/LogStream.h"
#include "utility/logging/ThreadDatabase.h"
#include "utility/platform/Error.h"
#include "utility/platform/Export.h"
#include "utility/platform/Types.h"
#include "utility/system/Locks.h"
