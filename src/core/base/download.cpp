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

// Takes a piece of the body, as std::fwrite does with a std::FILE.
using TakePiece = size_t (*)(const void* piece, size_t size, size_t count, void* target);

// What went wrong with the transfer, or the answer; empty: the whole body was given to `take`. An answer
// without a body, and any but 200, is not the file that was asked for.
static std::string lf_transfer(CURL* curl, const std::string& url, TakePiece take, void* target)
{
    curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl, CURLOPT_USERAGENT, "Velatra");
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, take);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, target);
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
    if (const CURLcode code = curl_easy_perform(curl); code != CURLE_OK) {
        return curl_easy_strerror(code);
    }
    constexpr long kFound = 200;
    long status = 0;
    curl_off_t bytes = 0;
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status);
    curl_easy_getinfo(curl, CURLINFO_SIZE_DOWNLOAD_T, &bytes);
    return status != kFound ? format("the server answers {}", status) : bytes == 0 ? "the file is empty" : "";
}

// Fetches into the file `part`. False, and the log says why, unless it was fully fetched.
static bool lf_fetchInto(CURL* curl, const std::string& url, const std::filesystem::path& part, bool binary)
{
    std::FILE* file = std::fopen(part.string().c_str(), binary ? "wb" : "w");
    if (file == nullptr) {
        logLine(format("could not open output file: {}", gf_shown(part)));
        return false;
    }
    const auto put = [](const void* piece, size_t size, size_t count, void* target) {
        return std::fwrite(piece, size, count, static_cast<std::FILE*>(target));
    };
    std::string failed = lf_transfer(curl, url, put, file);
    if (std::fclose(file) != 0 && failed.empty()) {
        failed = "the file can't be written";
    }
    if (!failed.empty()) {
        logLine(format("{}: {}", url, failed));
    }
    return failed.empty();
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

using Curl = std::unique_ptr<CURL, void (*)(CURL*)>;

static Curl lf_newCurl()
{
    static std::once_flag curlReady;
    std::call_once(curlReady, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
    return {curl_easy_init(), curl_easy_cleanup};
}

static bool lf_fetch(const std::string& name, const std::filesystem::path& localPath)
{
    const Curl curl = lf_newCurl();
    return curl && download(curl.get(), gf_serverAddress() + name, localPath, true);
}

std::optional<std::string> gf_fetchText(const std::string& name, std::chrono::seconds limit)
{
    const Curl curl = lf_newCurl();
    if (!curl) {
        return std::nullopt;
    }
    std::string text;
    const auto put = [](const void* piece, size_t size, size_t count, void* target) {
        static_cast<std::string*>(target)->append(static_cast<const char*>(piece), size * count);
        return size * count;
    };
    curl_easy_setopt(curl.get(), CURLOPT_TIMEOUT, static_cast<long>(limit.count()));
    const std::string url = gf_serverAddress() + name;
    if (const std::string failed = lf_transfer(curl.get(), url, put, &text); !failed.empty()) {
        logLine(format("{}: {}", url, failed));
        return std::nullopt;
    }
    return text;
}

bool fetchZippedText(const std::string& zipName, const std::filesystem::path& targetPath)
{
    if (!lf_fetch(zipName, zipName)) {
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
