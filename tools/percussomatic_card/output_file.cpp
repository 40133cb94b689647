// SPDX-License-Identifier: MIT
#include "output_file.h"

#include "arguments.h"
#include "files.h"
#include "interrupt.h"

#include <utility>

namespace percussomatic::tool {

namespace {

std::string_view faultText(SaveResult result) {
    switch (result) {
    case SaveResult::saved:
        return {};
    case SaveResult::readOnly:
        return "is read-only; expected a file that can be replaced";
    case SaveResult::notAFile:
        return "is not a regular file; expected a file name";
    case SaveResult::noFolder:
    case SaveResult::notWritten:
        break;
    }
    return "cannot be written; expected an existing, writable folder and enough free disk space";
}

} // namespace

OutputFile::OutputFile(std::string name) : name_(std::move(name)) {
    const std::filesystem::path path = pathFromUtf8(name_);
    removeStaleTemporaries(path);
    replacement_.emplace(path);
    noteFault(replacement_->result());
    if (failed() && temporaryNamesTaken(path)) {
        fault_ = "cannot be written, because " + name_ + ".1.saving to " + name_ +
                 ".9.saving are left from killed commands or still in use; try again in a minute";
    }
}

void OutputFile::noteFault(SaveResult result) {
    if (!failed()) {
        fault_ = faultText(result);
    }
}

int OutputFile::exitCode() const {
    if (failed()) {
        reportError(name_, fault_);
    }
    return failed() ? kFailure : kSuccess;
}

void OutputFile::write(std::string_view bytes) {
    if (!failed()) {
        replacement_->write(bytes);
        noteFault(replacement_->result());
    }
}

int OutputFile::finish() {
    if (!failed()) {
        noteFault(replacement_->finish());
    }
    if (!failed() && interrupted()) {
        fault_ = "interrupted; the file is not written";
    }
    return exitCode();
}

int OutputFile::commit() {
    if (!failed()) {
        noteFault(replacement_->commit());
    }
    return exitCode();
}

int writeOutput(const std::string& file, std::string_view bytes) {
    const InterruptGuard interruptGuard;
    OutputFile output(file);
    output.write(bytes);
    const int code = output.finish();
    return code == kSuccess ? output.commit() : code;
}

} // namespace percussomatic::tool
