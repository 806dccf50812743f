#include "base/Version.h"

const char* YarvBookVersion() { return YARVBOOK_VERSION_TEXT; }
