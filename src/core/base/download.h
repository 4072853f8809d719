// Downloads from the program's server. The only place that speaks HTTP.
//
// Any thread. Certificates are verified; a transfer that doesn't connect or
// crawls is given up, and so is any when the run is to stop. Nothing partial is left behind.
#pragma once

#include <curl/curl.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

namespace vlt {

// The server's base address, ending in "/": `VELATRA_SERVER` of the environment, else the built-in one.
std::string gf_serverAddress();

// Fetches `url` into `localPath`. True when the file was fully fetched; else `localPath` is as before.
// `binary` false writes line ends in the system's form.
bool download(CURL* curl, const std::string& url, const std::filesystem::path& localPath, bool binary);

// The content of the server's file `name`, a path below its base address, fetched within the limit.
std::optional<std::string> gf_fetchText(const std::string& name, std::chrono::seconds limit);

// Fetches the server's archive `zipName` and writes the text of its entries, folders apart, to
// `targetPath`. True when it stands there; else `targetPath` is as before.
bool fetchZippedText(const std::string& zipName, const std::filesystem::path& targetPath);

}  // namespace vlt
