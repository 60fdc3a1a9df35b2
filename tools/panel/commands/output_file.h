#ifndef PANEL_COMMANDS_OUTPUT_FILE_H
#define PANEL_COMMANDS_OUTPUT_FILE_H

#include <string>
#include <vector>

// The files that --output names.

/// Throws UsageError if `output` is one of `inputs`, under whatever name.
void refuseInputs(const std::string &output, const std::vector<std::string> &inputs);

/// Gives a file a new content. It is complete on the disk before it takes the place of the old one, which otherwise
/// stays. A device or pipe is written to. Throws UsageError.
void replaceFile(const std::string &file, const std::string &text);

/// Puts a command's result into the file `output`, or on standard output if that is empty.
void giveOut(const std::string &text, const std::string &output);

#endif
