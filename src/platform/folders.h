// The folders that the system gives to programs and users.
//
// On Linux each comes from an environment variable, else from the XDG base folders, else lies below
// the user's home. Nothing is kept: every call looks again. Any thread.
#pragma once

#include <filesystem>

namespace vlt {

// Roaming application data. VELATRA_APPDATA, else XDG_CONFIG_HOME, else ~/.config.
std::filesystem::path gf_appDataFolder();

// Velatra's own folder in the roaming application data.
std::filesystem::path gf_dataFolder();

// Application data of all users, known as C:\ProgramData. VELATRA_PROGRAMDATA, else the folder
// ProgramData of the drive VELATRA_DRIVE_C, else velatra/ProgramData below XDG_DATA_HOME or
// ~/.local/share.
std::filesystem::path gf_programDataFolder();

// The user's documents. VELATRA_DOCUMENTS, else XDG_DOCUMENTS_DIR, else ~/Documents.
std::filesystem::path gf_documentsFolder();

// Documents of all users. VELATRA_PUBLIC_DOCUMENTS, else XDG_PUBLICSHARE_DIR, else ~/Public.
std::filesystem::path gf_publicDocumentsFolder();

// Where locks and local sockets live. VELATRA_RUNTIME, else velatra below XDG_RUNTIME_DIR, else a
// folder of the user's own below the temporary folder.
std::filesystem::path gf_runtimeFolder();

// Makes the runtime folder. Below the temporary folder, where everybody may put things, it is for this user
// alone; false if it can't be made so, or is somebody else's: nothing in it is to be trusted then.
bool gf_makeRuntimeFolder();

// Where the program that runs lies.
std::filesystem::path gf_programFolder();

// The current directory, or "." if it is gone.
std::filesystem::path gf_currentFolder();

}  // namespace vlt
