#include "ui/text_commands.h"

#include "core/base/parameters.h"
#include "core/base/text.h"
#include "ui/boxes.h"
#include "ui/commands.h"

#include <array>
#include <optional>
#include <vector>

namespace vlt {

// The one of the parameters with this name that has a control of this kind; nullptr for none.
template <typename Box, typename T>
static Box* lf_find(const std::vector<ParameterOf<T>*>& parameters, const std::string& name)
{
    for (ParameterOf<T>* p : parameters) {
        if (gf_upperCase(p->name) == name) {
            return dynamic_cast<Box*>(p);
        }
    }
    return nullptr;
}

static std::optional<bool> lf_switch(std::string_view text)
{
    struct Word {
        std::string_view text;
        bool on;
    };
    static constexpr std::array<Word, 8> kWords{{{"ON", true},
                                                 {"TRUE", true},
                                                 {"YES", true},
                                                 {"1", true},
                                                 {"OFF", false},
                                                 {"FALSE", false},
                                                 {"NO", false},
                                                 {"0", false}}};
    for (const Word& word : kWords) {
        if (word.text == gf_upperCase(text)) {
            return word.on;
        }
    }
    return std::nullopt;
}

static std::string lf_setSwitch(Checkbox& box, std::string_view text)
{
    const std::optional<bool> on = lf_switch(text);
    if (!on) {
        return format("{} is switched \"on\" or \"off\"", box.name);
    }
    if (*on != box.value) {
        gf_clickCheckbox(box);
    }
    return {};
}

template <typename Box, typename Process>
static std::string lf_setNumber(Box& box, std::string_view text, const Process& process)
{
    const bool readable = process(box, text) != Typed::Unreadable;
    return readable ? "" : format("{} is a number, and stays {}", box.name, box.value.load());
}

template <typename Box, typename Set>
static std::string lf_ifEnabled(Box& box, const Set& set)
{
    return gf_isEnabled(box) ? set(box) : format("{} takes no input now", box.name);
}

static std::string lf_set(const std::string& name, std::string_view text)
{
    if (auto* box = lf_find<Checkbox>(gf_parameters<bool>(), name)) {
        return lf_ifEnabled(*box, [text](Checkbox& b) { return lf_setSwitch(b, text); });
    }
    if (auto* box = lf_find<IntTextbox>(gf_parameters<int32_t>(), name); box != nullptr && box != &MAX_FIT) {
        return lf_ifEnabled(*box, [text](IntTextbox& b) { return lf_setNumber(b, text, lf_processTbInt); });
    }
    if (auto* box = lf_find<FloatTextbox>(gf_parameters<float>(), name)) {
        return lf_ifEnabled(*box,
                            [text](FloatTextbox& b) { return lf_setNumber(b, text, lf_processTbFloat); });
    }
    if (auto* box = lf_find<StringTextbox>(gf_parameters<std::string>(), name)) {
        return lf_ifEnabled(*box, [text](StringTextbox& b) {
            gf_enterText(b, text);
            return std::string();
        });
    }
    return format("there is no control \"{}\"", name);
}

static std::string lf_press(std::string_view name)
{
    const Button* button = gf_findButton(name);
    if (button == nullptr) {
        return format("there is no button \"{}\"", name);
    }
    return lf_ifEnabled(*button, [](const Button& b) {
        gf_pressButton(b);
        return std::string();
    });
}

std::string gf_runCommand(std::string_view line)
{
    constexpr std::string_view kPress = "press ";
    const std::string_view command = gf_trimmed(line);
    if (command.empty()) {
        return {};
    }
    if (command.starts_with(kPress)) {
        return lf_press(gf_trimmed(command.substr(kPress.size())));
    }
    const size_t equals = command.find('=');
    if (equals == std::string_view::npos) {
        return format("\"{}\" isn't understood: NAME=value, or press NAME", command);
    }
    return lf_set(gf_upperCase(gf_trimmed(command.substr(0, equals))),
                  gf_trimmed(command.substr(equals + 1)));
}

}  // namespace vlt
