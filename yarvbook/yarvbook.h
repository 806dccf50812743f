// libYarvBook: the whole public interface in one include.
#pragma once

#include "base/Export.h"
#include "base/Version.h"
#include "format/DateTime.h"
#include "platform/Clock.h"
#include "platform/CodePage.h"
#include "platform/GlobalMemory.h"
#include "platform/Locale.h"
#include "platform/Resources.h"
#include "platform/TextServices.h"
