// The record of the edit that this process makes.

#ifndef CALLRECORDINGCTL_COMMANDS_RECORDEDIT_H
#define CALLRECORDINGCTL_COMMANDS_RECORDEDIT_H

#include <memory>
#include <string>

#include "CommandLine.h"
#include "administration/history/History.h"

namespace callrecordingctl {

/// Records an edit around its save. That it cannot is said, and stops no edit.
class EditRecord {
  public:
    /// Before the save of an edit that takes back so many ones.
    EditRecord(Context const& context, std::string const& before, std::size_t undone);

    /// After the save.
    void Finish(std::string const& after);

  private:
    void Say(std::exception const& error);

    std::unique_ptr<History> history_; // None once it has failed.
};

} // namespace callrecordingctl

#endif
