// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include "CBB/Config/Config_Task.h"

#include <functional>
#include <string>
#include <tinyxml.h>
#include <vector>

using Importer = int (CConfig_Task::*)(const TiXmlElement*, DeviceParaRecord*);
using Import = std::function<int(CConfig_Task&, const TiXmlElement*, DeviceParaRecord*)>;

struct Section {
    Import import; // none for what no importer fills
    std::string schema;
};

// Every block of the record, in its order.
const std::vector<Section>& Sections();

// An element of its own document.
struct Element {
    explicit Element(const std::string& xml) { document.Parse(xml.c_str()); }
    const TiXmlElement* Get() const { return document.RootElement(); }
    TiXmlDocument document;
};
