// The component's work folder: where the settings file "HR.ini", the daily
// debug logs and other working files live when nothing else is configured.
//
// workFolder() is the folder given to setWorkFolder(); else the environment
// variable ORVALIS_WORK_DIR; else $XDG_DATA_HOME/orvalis; else
// $HOME/.local/share/orvalis (the current directory's "orvalis" folder when
// neither is set). The folder is created on first use. The choice is
// process-wide and guarded by a mutex: safe to call from any thread.
#pragma once

#include <filesystem>
#include <string>

namespace orvalis {

// The work folder, created if missing. Raises err::kPathNotFound when it
// cannot be reached, err::kPermissionDenied when creating it is refused and
// err::kPathFileAccess when a file stands in its place.
std::filesystem::path workFolder();
// Fixes the work folder for the process; an empty path returns to the
// environment's choice.
void setWorkFolder(const std::filesystem::path& folder);

// The folder text with a "/" at its end (the original ensured a "\"): ""
// gives "/", "a/b" gives "a/b/", "a/b/" is unchanged.
std::string withTrailingSlash(std::string folder);

}  // namespace orvalis
