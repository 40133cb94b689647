// SPDX-License-Identifier: MIT
#pragma once

#include "files/file_replacement.h"

#include <optional>
#include <string>
#include <string_view>

namespace percussomatic::tool {

// One output file of a command: an existing file stays as it is until commit(). An InterruptGuard
// has to exist at least as long, so that an interrupted command removes the temporary file.
class OutputFile {
public:
    // `name` is UTF-8. Removes the temporary files that commands killed before have left.
    explicit OutputFile(std::string name);

    void write(std::string_view bytes);
    bool failed() const noexcept { return !fault_.empty(); }

    // Both return the exit code and report a failure. finish() puts the content on the disk under
    // the temporary name and fails if the command has been interrupted; commit() renames it.
    int finish();
    int commit();

private:
    void noteFault(SaveResult result);
    int exitCode() const;

    std::string name_;
    std::string fault_; // empty while there is none
    std::optional<FileReplacement> replacement_;
};

// Writes the whole file or leaves an existing one unchanged. Returns the exit code.
int writeOutput(const std::string& file, std::string_view bytes);

} // namespace percussomatic::tool
