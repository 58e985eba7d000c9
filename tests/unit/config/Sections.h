// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <string>
#include <tinyxml.h>
#include <vector>

#include "CBB/Config/Config_Task.h"

// With every importer in one form.
struct Task : CConfig_Task {
    template <int block, bool skipPhone>
    int Vehicle(const TiXmlElement* section, DeviceParaRecord* record) {
        return Import_VehicleInfo(section, record, block, skipPhone);
    }
    template <int block>
    int Cms(const TiXmlElement* section, DeviceParaRecord* record) {
        return Import_stCMS(section, record, block);
    }
};
using Import = int (Task::*)(const TiXmlElement*, DeviceParaRecord*);

// What fills each block of the record, in its order; null for what no importer fills. What each
// reads and where it goes stands in sections.txt.
extern const std::vector<Import> kImporters;

struct Element {
    explicit Element(const std::string& xml) { document.Parse(xml.c_str()); }
    const TiXmlElement* Get() const { return document.RootElement(); }
    TiXmlDocument document;
};
