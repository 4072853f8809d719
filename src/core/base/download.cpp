#include "core/base/download.h"

#include "core/base/log.h"
#include "core/base/paths.h"
#include "core/base/replace_file.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "core/base/zip_archive.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <mutex>

namespace vlt {

// Where a release fetches from; a build for a test server says so with VELATRA_SERVER.
static constexpr const char* kServerAddress = "https://download.velatra.example/downloads/";

static constexpr long kConnectSeconds = 10;
static constexpr long kLowSpeedBytes = 200;  // per second; slower for kLowSpeedSeconds: given up
static constexpr long kLowSpeedSeconds = 20;
static constexpr curl_off_t kLargestFile = 1LL << 30;

std::string gf_serverAddress()
{
    const char* given = std::getenv("VELATRA_SERVER");
    std::string address = given != nullptr && *given != '\0' ? given : kServerAddress;
    if (!address.ends_with('/')) {
        address += '/';
    }
    return address;
}

static int lf_abortWhenStopping(void*, curl_off_t, curl_off_t, curl_off_t, curl_off_t)
{
    return gf_stopping() ? 1 : 0;
}

static CURLcode lf_transfer(CURL* curl, const std::string& url, std::FILE* file)
{
    curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl, CURLOPT_USERAGENT, "Velatra");
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &std::fwrite);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, file);
    curl_easy_setopt(curl, CURLOPT_FAILONERROR, 1L);
    curl_easy_setopt(curl, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(curl, CURLOPT_SSL_VERIFYHOST, 2L);
    curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, kConnectSeconds);
    curl_easy_setopt(curl, CURLOPT_LOW_SPEED_LIMIT, kLowSpeedBytes);
    curl_easy_setopt(curl, CURLOPT_LOW_SPEED_TIME, kLowSpeedSeconds);
    curl_easy_setopt(curl, CURLOPT_MAXFILESIZE_LARGE, kLargestFile);
    curl_easy_setopt(curl, CURLOPT_QUICK_EXIT, 1L);  // a stop doesn't wait for a name server
    curl_easy_setopt(curl, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(curl, CURLOPT_XFERINFOFUNCTION, &lf_abortWhenStopping);
    return curl_easy_perform(curl);
}

// Fetches into the file `part`. False, and the log says why, unless it was fully fetched.
static bool lf_fetchInto(CURL* curl, const std::string& url, const std::filesystem::path& part, bool binary)
{
    std::FILE* file = std::fopen(part.string().c_str(), binary ? "wb" : "w");
    if (file == nullptr) {
        logLine(format("could not open output file: {}", gf_shown(part)));
        return false;
    }
    const CURLcode code = lf_transfer(curl, url, file);
    const bool written = std::fclose(file) == 0;
    if (code != CURLE_OK || !written) {
        logLine(
            format("{}: {}", url, code == CURLE_OK ? "the file can't be written" : curl_easy_strerror(code)));
    }
    return code == CURLE_OK && written;
}

bool download(CURL* curl, const std::string& url, const std::filesystem::path& localPath, bool binary)
{
    try {
        return gf_replaceFile(localPath, [&](const std::filesystem::path& part) {
            return lf_fetchInto(curl, url, part, binary);
        });
    } catch (const std::exception& e) {
        logLine(format("downloader exception: \"{}\", {} => {}", e.what(), url, gf_shown(localPath)));
        return false;
    }
}

// The text of all entries but folders, one after the other, to `target`. False if there is none.
static bool lf_unzipText(const std::filesystem::path& zipPath, const std::filesystem::path& target)
{
    return gf_replaceFile(target, [&zipPath](const std::filesystem::path& part) {
        const ZipArchive archive(zipPath);
        std::ofstream file(part, std::ios::binary | std::ios::trunc);
        bool any = false;
        for (const std::string& entry : archive.entries()) {
            if (entry.ends_with('/')) {
                continue;
            }
            archive.read(entry, kLargestFile, [&file](std::span<const char> piece) {
                file.write(piece.data(), static_cast<std::streamsize>(piece.size()));
            });
            any = true;
        }
        file.close();
        return any && file;
    });
}

bool gf_fetch(const std::string& name, const std::filesystem::path& localPath)
{
    static std::once_flag curlReady;
    std::call_once(curlReady, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
    const std::unique_ptr<CURL, void (*)(CURL*)> curl(curl_easy_init(), curl_easy_cleanup);
    return curl && download(curl.get(), gf_serverAddress() + name, localPath, true);
}

bool fetchZippedText(const std::string& zipName, const std::filesystem::path& targetPath)
{
    if (!gf_fetch(zipName, zipName)) {
        logLine(format("downloading {} failed?", zipName));
        return false;
    }
    const bool unzipped = lf_unzipText(zipName, targetPath);
    if (!unzipped) {
        logLine(format("unzipping {} failed?", zipName));
    }
    std::filesystem::remove(zipName);
    return unzipped;
}

}  // namespace vlt
