#include "tools/dbase_source.h"

#include "core/base/text.h"
#include "core/base/zip_archive.h"
#include "liveries/dbase_reader.h"

#include <span>
#include <stdexcept>

namespace vlt {

constexpr uint64_t kLargestDocument = 1U << 30;

void gf_parseDocument(pugi::xml_document& document, const std::string& path)
{
    pugi::xml_parse_result parsed;
    if (path.ends_with(".zip")) {
        std::string text;
        const ZipArchive archive(path);
        for (const std::string& entry : archive.entries()) {
            archive.read(entry, kLargestDocument,
                         [&text](std::span<const char> piece) { text.append(piece.data(), piece.size()); });
        }
        parsed = document.load_buffer(text.data(), text.size());
    } else {
        parsed = document.load_file(path.c_str());
    }
    if (!parsed) {
        throw std::runtime_error(format("{}: {}", path, parsed.description()));
    }
}

void gf_loadDbase(const std::string& path)
{
    if (path.empty()) {
        readDbase();
        return;
    }
    pugi::xml_document document;
    gf_parseDocument(document, path);
    gf_readDbaseSections(document, path);
}

}  // namespace vlt
