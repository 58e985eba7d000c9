// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <functional>
#include <string>
#include <tinyxml.h>
#include <vector>

#include "CBB/Config/Config_Task.h"

using T = CConfig_Task;
using Import = std::function<int(T&, const TiXmlElement*, DeviceParaRecord*)>;

// What fills each block of the record, in its order; null for what no importer fills. What each
// reads and where it goes stands in sections.txt.
const std::vector<Import>& Importers();

struct Element {
    explicit Element(const std::string& xml) { document.Parse(xml.c_str()); }
    const TiXmlElement* Get() const { return document.RootElement(); }
    TiXmlDocument document;
};
