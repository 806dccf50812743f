// The "calc" and "eval" commands of the CLI host.
#pragma once

// argv holds the arguments after "calc". Returns the process exit code: 0 (formulas
// that do not parse only warn), 1 when an input cannot be read or is malformed or an
// output cannot be written, 2 for a usage error.
int RunCalcCommand(int argc, char** argv);

// argv holds the arguments after "eval". Returns 0, 1 when the formula does not
// parse, 2 for a usage error.
int RunEvalCommand(int argc, char** argv);
