#include "sim/user_aircraft.h"

#include "core/base/display.h"
#include "core/base/errors.h"
#include "core/base/log.h"
#include "core/base/text.h"
#include "liveries/database.h"
#include "liveries/liveries.h"
#include "traffic/category.h"
#include "traffic/geodesy.h"

#include <array>
#include <string>

namespace vlt {

static constexpr size_t kShownTitle = 48;  // characters that the window has room for

SharedValue<double> userHalfSpan = 0.0;

static std::string userTitle;  // [simClient] the aircraft's title, whole
static std::string userModel;  // [simClient] its model after deduction

// Cut to at most `length` bytes, but never inside a UTF-8 character.
static std::string_view lf_cut(std::string_view text, size_t length)
{
    if (text.size() <= length) {
        return text;
    }
    while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80) {
        --length;
    }
    return text.substr(0, length);
}

void gf_onUserTitle(std::string_view title)
{
    display.user.title = lf_cut(title, kShownTitle);
    userTitle = title;
    logLine(format("SimConnect: User aircraft title: {}", title));
    if (title.empty()) {
        logLine("! title of your ac is empty?");
    }
}

// The type's half span in nm; none if the data base doesn't list it.
static std::optional<double> lf_listedHalfSpan(std::string_view type)
{
    constexpr size_t kLongestType = 4;
    if (type.size() > kLongestType) {
        return std::nullopt;
    }
    const auto found = dbase.halfWingspans.find(type);
    return found == dbase.halfWingspans.end() || found->second == 0 ? std::nullopt
                                                                    : std::optional(found->second);
}

// The type that the beginning of a well-known title tells, or none.
static std::string_view lf_typeOfTitle(std::string_view title)
{
    struct Known {
        std::string_view title, type;
    };
    static constexpr std::array<Known, 3> kKnown{
        {{"Aerosoft A319", "A319"}, {"Aerosoft A320", "A320"}, {"Aerosoft A321", "A321"}}};
    for (const Known& known : kKnown) {
        if (title.starts_with(known.title)) {
            return known.type;
        }
    }
    return {};
}

static bool lf_isCameraVehicle(std::string_view model)
{
    return model.find("camerapod") != std::string_view::npos ||
           model.find("Crew Vessel") != std::string_view::npos;
}

static void lf_storeHalfSpan(double halfSpan)
{
    userHalfSpan = halfSpan;
    logLine(format(", half wing span: {:.1F} meter", halfSpan * kMetresPerNm));
}

// Sets userModel and userHalfSpan for an ordinary aircraft.
static void lf_deduceAircraft(std::string_view model)
{
    userModel = model;
    std::optional<double> halfSpan = lf_listedHalfSpan(model);
    const std::string_view deduced = lf_typeOfTitle(userTitle);
    if (halfSpan.value_or(dbase.largestHalfWingspan) == dbase.largestHalfWingspan && !deduced.empty()) {
        logLine(format("SimConnect: User aircraft model deduced from title: {}", deduced));
        userModel = deduced;
        halfSpan = lf_listedHalfSpan(deduced);
    }
    if (!halfSpan) {
        showMessage("User aircraft wing span unknown, max is taken instead, please report in my Forum!",
                    true);
    }
    lf_storeHalfSpan(halfSpan.value_or(dbase.largestHalfWingspan));
}

void gf_onUserModel(std::optional<std::string_view> model)
{
    if (!model) {
        throw UserErrorException(kPlainUserError,
                                 "It looks like you have not selected an aircraft as user vehicle");
    }
    logLine(format("model raw: {} ", *model));
    if (model->empty()) {
        throw UserErrorException(kPlainUserError,
                                 "atc_model= in [General] section of your aircraft.cfg is empty or missing");
    }
    logLine(format("SimConnect: User aircraft model: {}", *model));
    AcCategory category = AcCategory::Light;
    if (lf_isCameraVehicle(*model)) {
        userModel = *model;
        lf_storeHalfSpan(halfWingspanNm("E190"));
    } else {
        lf_deduceAircraft(*model);
        category = categoryOf(userModel);
    }
    display.user.model = userModel;
    logLine(format(", category: {}", gf_forCategory(kCategoryNames, category)));
}

void gf_resetUserAircraft()
{
    userTitle.clear();
    userModel.clear();
    userHalfSpan = 0.0;
}

}  // namespace vlt
