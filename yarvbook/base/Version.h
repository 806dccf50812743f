// The library's version, for hosts that check what they loaded.
#pragma once

#include "base/Export.h"

// "MAJOR.MINOR.PATCH" of the loaded library; a static string.
YARVBOOK_API const char* YarvBookVersion();
