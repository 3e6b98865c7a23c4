// A text that is given to somebody's editor.

#ifndef CALLRECORDINGCTL_COMMANDS_EDITORFILE_H
#define CALLRECORDINGCTL_COMMANDS_EDITORFILE_H

#include <string>

namespace callrecordingctl {

/// A file with a text, which stays until Remove is called: nothing that somebody wrote is lost.
/// Operations throw a Failure that names the file.
class EditorFile {
  public:
    /// Makes the file in TMPDIR, or else in /tmp, readable by this user only.
    explicit EditorFile(std::string const& text);

    std::string const& Path() const { return path_; }

    /// Opens the file with VISUAL, EDITOR, editor or vi, the first of them that there is, and
    /// returns what is in it when the editor has ended.
    std::string Edit() const;

    void Write(std::string const& text) const;
    void Remove() const;

  private:
    std::string path_;
};

} // namespace callrecordingctl

#endif
