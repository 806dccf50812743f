// The "format" command of the CLI host.
#pragma once

// argv holds the arguments after "format". Returns the process exit code: 0, 1 when
// the format does not parse, 2 for a usage error.
int RunFormatCommand(int argc, char** argv);
