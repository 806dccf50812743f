#include "base/ZelException.h"

void CZelException::ThrowMemory() { throw CZelException(errMemory); }
