// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <string>
#include <tinyxml.h>
#include <vector>

#include "CBB/Config/Config_Task.h"

// With every importer in one form.
struct Task : CConfig_Task {
    template <int Block, bool SkipPhone>
    int Vehicle(const TiXmlElement* section, DeviceParaRecord* record) {
        return Import_VehicleInfo(section, record, Block, SkipPhone);
    }
    template <int Block>
    int Cms(const TiXmlElement* section, DeviceParaRecord* record) {
        return Import_stCMS(section, record, Block);
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
