// SPDX-License-Identifier: GPL-2.0-only
#include "Recorder.h"

#include <algorithm>
#include <iterator>

#include "State.h"

namespace {

// Sent in turn. Each one fails at another step of the reader.
const char* const kGarbage[] = {
    "\x01\xFE\x80<<&&\"'>\x7F=noise",
    "",
    "<VariCfgSec Action=\"DEVICE_QUERY\" Result=\"0\"><stBaseInfo strFD_DeviceNo=\"DEMO1",
    "<VariCfgSec Result=\"0\" Action=\"DEVICE_SET\"/>",
    "<VariCfgSec Action=\"DEVICE_QUERY\" Result=\"zero\"><stNothing a=\"x\"/></VariCfgSec>",
    "<a><a><a><a><a><a><a><a><a><a><a><a><a><a><a><a><a><a><a><a><a><a><a><a><a><a><a><a><a><a><a>",
};

// An unknown Action is repeated in the answer up to this length.
constexpr size_t kMaxAction = 64;

// Drops the last attribute of the last element that has one. False when none is left.
bool DropLastAttribute(XmlNode& node) {
    while (!node.children.empty()) {
        if (DropLastAttribute(node.children.back()))
            return true;
        node.children.pop_back();
    }
    if (node.attributes.empty())
        return false;
    node.attributes.pop_back();
    return true;
}

std::string Compose(const std::string& action, Result result, int forced, const XmlNode* section) {
    const int number = forced != 0 ? forced : static_cast<int>(result);
    XmlNode root{"VariCfgSec", {{"Action", action}, {"Result", std::to_string(number)}}, {}};
    if (section == nullptr)
        return ToLine(root);
    root.children.push_back(*section);
    std::string text = ToLine(root);
    while (text.size() > kMaxAnswer && DropLastAttribute(root.children.front()))
        text = ToLine(root);
    return text;
}

} // namespace

Recorder::Recorder(XmlNode state, Faults faults, Store store)
    : m_state(std::move(state)), m_faults(std::move(faults)), m_store(std::move(store)) {}

std::optional<std::string> Recorder::Answer(const std::string& request) {
    ++m_requests;
    if (m_faults.dropEvery > 0 && m_requests % m_faults.dropEvery == 0)
        return std::nullopt;

    std::string ignored;
    const auto message =
        request.size() <= kMaxRequest ? ParseXml(request, ignored) : std::optional<XmlNode>();
    if (!message || message->name != "VariCfgSec" || message->attributes.empty() ||
        message->attributes[0].first != "Action") {
        return m_faults.garbage ? Garbage()
                                : Compose("", Result::BadMessage, m_faults.result, nullptr);
    }
    // Never answer an answer: two peers that do would not stop.
    if (message->attributes.size() > 1 && message->attributes[1].first == "Result")
        return std::nullopt;

    std::string action = message->attributes[0].second;
    const XmlNode* asked = message->children.empty() ? nullptr : &message->children[0];
    const auto& silent = m_faults.silent;
    if (asked != nullptr && std::find(silent.begin(), silent.end(), asked->name) != silent.end())
        return std::nullopt;
    if (m_faults.garbage)
        return Garbage();

    Result result = Result::Ok;
    const XmlNode* shown = nullptr;
    if (action != "DEVICE_QUERY" && action != "DEVICE_SET") {
        result = Result::BadAction;
        action.resize(std::min(action.size(), kMaxAction));
    } else if (asked == nullptr || m_state.FindChild(asked->name) == nullptr) {
        result = Result::BadSection;
    } else if (action == "DEVICE_QUERY") {
        shown = m_state.FindChild(asked->name);
    } else if (m_faults.result == 0) {
        result = Set(*asked);
    }
    return Compose(action, result, m_faults.result, shown);
}

Result Recorder::Set(const XmlNode& section) {
    XmlNode changed = m_state;
    if (!Merge(*changed.FindChild(section.name), section))
        return Result::BadName;
    if (!m_store(changed))
        return Result::NotStored;
    m_state = std::move(changed);
    return Result::Ok;
}

const char* Recorder::Garbage() {
    return kGarbage[m_garbage++ % std::size(kGarbage)];
}
