// Pending entries of the function registry: the table rows that no family file has
// registered a body for. Private to eval/.
#pragma once

#include "eval/FuncTable.h"

// Makes and registers a pending function for info, kept until process exit. Every
// call of it gives #NAME?: the name is known to the parser, but the engine cannot
// compute it, which is what a spreadsheet shows for a function it does not support.
void RegisterPendingFunc(const TFuncInfo& info);
