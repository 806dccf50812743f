// The "convert" command of the CLI host.
#pragma once

// argv holds the arguments after "convert". Returns the process exit code: 0, 1 when
// the formula does not parse, 2 for a usage error.
int RunConvertCommand(int argc, char** argv);
