#include "standin/bgl_writer.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <stdexcept>

namespace vlt {

// Little-endian bytes, one field after the other.
class Bytes
{
public:
    Bytes& u8(uint32_t value)
    {
        text += static_cast<char>(value);
        return *this;
    }
    Bytes& u16(uint32_t value)
    {
        return u8(value & 0xFF).u8(value >> 8 & 0xFF);
    }
    Bytes& u32(uint32_t value)
    {
        return u16(value & 0xFFFF).u16(value >> 16);
    }
    Bytes& real(double value)
    {
        return u32(std::bit_cast<uint32_t>(static_cast<float>(value)));
    }
    Bytes& zeros(size_t count)
    {
        text.append(count, '\0');
        return *this;
    }
    Bytes& place(double lat, double lon)
    {
        u32(static_cast<uint32_t>(std::llround((lon + 180) * (3.0 * 0x10000000) / 360)));
        return u32(static_cast<uint32_t>(std::llround((90 - lat) * 0x20000000 / 180)));
    }
    std::string text;
};

// A record: its id, its size with this head, its body up to a whole number of words.
static std::string lf_record(uint32_t id, std::string body)
{
    constexpr size_t kHead = 6;
    while ((body.size() + kHead) % 4 != 0) {
        body += '\0';
    }
    return Bytes().u16(id).u32(static_cast<uint32_t>(body.size() + kHead)).text + body;
}

static uint32_t lf_packedCode(const std::string& code)
{
    uint32_t packed = 0;
    for (const char c : code) {
        const bool digit = c >= '0' && c <= '9';
        packed = packed * 38 + static_cast<uint32_t>(digit ? c - '0' + 2 : c - 'A' + 12);
    }
    return packed << 5;
}

// "G12" as the code of the letters before the number.
static uint32_t lf_nameCode(const std::string& letters)
{
    if (letters.empty()) {
        return 0;
    }
    if (letters.size() == 1 && letters[0] >= 'A' && letters[0] <= 'Z') {
        return static_cast<uint32_t>(letters[0] - 'A') + 12;
    }
    const char* const kNamed[] = {"r", "p", "np", "ep", "sep", "sp", "swp", "wp", "nwp", "g"};
    for (uint32_t i = 0; i < std::size(kNamed); ++i) {
        if (letters == kNamed[i]) {
            return i + 1;
        }
    }
    throw std::invalid_argument("no parking is called " + letters);
}

static std::string lf_parking(const BglParkingPlan& plan, bool newer)
{
    const size_t letters = plan.id.find_first_of("0123456789");
    if (letters == std::string::npos) {
        throw std::invalid_argument("parking " + plan.id + " has no number");
    }
    const auto number = static_cast<uint32_t>(std::stoul(plan.id.substr(letters)));
    Bytes bytes;
    bytes.u32(lf_nameCode(plan.id.substr(0, letters)) | static_cast<uint32_t>(plan.type) << 8 | number << 12 |
              static_cast<uint32_t>(plan.airlines.size()) << 24);
    bytes.real(plan.radiusM).real(plan.headingDeg);
    for (int i = 0; i < 4; ++i) {
        bytes.real(20 + i);  // distances for the aircraft's nose
    }
    bytes.place(plan.lat, plan.lon);
    if (newer) {
        bytes.u32(0xC0FFEE);  // what it is for isn't known
    }
    for (const std::string& airline : plan.airlines) {
        bytes.text += airline;
        bytes.zeros(4 - airline.size());
    }
    return bytes.text;
}

static std::string lf_helipad(const BglHelipadPlan& plan)
{
    Bytes bytes;
    bytes.u16(0x0102).u32(0xFF808080).place(plan.lat, plan.lon).u32(500000);
    return lf_record(0x26, bytes.real(plan.widthM).real(plan.widthM).real(plan.headingDeg).text);
}

static std::string lf_airport(const BglAirportPlan& plan)
{
    Bytes head;
    head.zeros(6).place(47, 11).u32(static_cast<uint32_t>(std::llround(plan.elevationM * 1000))).zeros(16);
    head.u32(lf_packedCode(plan.code)).zeros(plan.newer ? 16 : 12);
    std::string body = head.text + lf_record(0x1234, "a record of something else");
    for (const std::string& name : plan.names) {
        body += lf_record(0x19, name);
    }
    for (const BglHelipadPlan& helipad : plan.helipads) {
        body += lf_helipad(helipad);
    }
    Bytes list;
    list.u16(static_cast<uint32_t>(plan.parkings.size()));
    for (const BglParkingPlan& parking : plan.parkings) {
        list.text += lf_parking(parking, plan.newer);
    }
    body += lf_record(plan.newer ? 0xAD : 0x3D, list.text);
    return lf_record(plan.newer ? 0xAB : 0x3C, body);
}

std::string gf_bglFile(const std::vector<BglAirportPlan>& airports)
{
    std::string records;
    for (const BglAirportPlan& plan : airports) {
        records += lf_record(0x17, "a record between airports") + lf_airport(plan);
    }
    constexpr uint32_t kSections = 2;
    constexpr uint32_t kEntries = 56 + kSections * 20;  // where the subsection entries begin
    constexpr uint32_t kRecords = kEntries + kSections * 16;
    Bytes file;
    file.u32(0x19920201).u32(56).zeros(8).u32(0x08051803).u32(kSections).zeros(32);
    file.u32(0x13).u32(1).u32(1).u32(kEntries).u32(16);    // something else
    file.u32(3).u32(1).u32(1).u32(kEntries + 16).u32(16);  // the airports
    for (uint32_t i = 0; i < kSections; ++i) {
        file.u32(0).u32(1).u32(kRecords).u32(static_cast<uint32_t>(records.size()));
    }
    return file.text + records;
}

}  // namespace vlt
