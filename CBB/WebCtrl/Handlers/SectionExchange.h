// SPDX-License-Identifier: GPL-2.0-only
#pragma once

#include <functional>

#include "CBB/Config/Config_Task.h"
#include "CBB/Config/DeviceParaRecord.h"
#include "CBB/WebCtrl/Handlers/WebField.h"
#include "CBB/WebCtrl/Link/ControlMessage.h"
#include "CBB/WebCtrl/WebCtrl.h"

// The exchanges that handlers make with the main application.

// Prints a get handler's trace line when it begins and when it ends.
class HandlerTrace {
public:
    HandlerTrace(const char* function, int line);
    ~HandlerTrace();
    HandlerTrace(const HandlerTrace&) = delete;
    HandlerTrace& operator=(const HandlerTrace&) = delete;

private:
    const char* m_function;
    int m_line;
};

using SectionImporter =
    std::function<int(CConfig_Task&, const TiXmlElement* section, DeviceParaRecord* record)>;

// Sends the query of `section`, spelled as QueryText wants it, and imports the section of its reply
// into the task's own record, which was zero. Returns the importer's result (0 on success, the
// record may hold a part otherwise), -1 when the exchange failed.
int QueryRecord(CWebCtrl& controller, const char* section, const SectionImporter& importer,
                CConfig_Task& task);

// QueryRecord, then copies one block of the record into `*out`. On failure `*out` stays as it is.
// Of a table of blocks the first one is copied.
template <typename Block>
int QueryBlock(CWebCtrl& controller, const char* section, const SectionImporter& importer,
               Block DeviceParaRecord::* block, Block* out) {
    CConfig_Task task;
    const int result = QueryRecord(controller, section, importer, task);
    if (result == 0)
        *out = task.m_stPara.*block;
    return result;
}
template <typename Block, size_t N>
int QueryBlock(CWebCtrl& controller, const char* section, const SectionImporter& importer,
               Block (DeviceParaRecord::*blocks)[N], Block* out) {
    CConfig_Task task;
    const int result = QueryRecord(controller, section, importer, task);
    if (result == 0)
        *out = (task.m_stPara.*blocks)[0];
    return result;
}

// Appends an attribute for each field of the record at `block`.
template <size_t N>
SetMessage& AddAttributes(SetMessage& message, const WebField (&fields)[N], const void* block) {
    for (const WebField& field : fields)
        if (field.kind == FieldKind::Text)
            message.Text(field.attribute, TextAt(field, block));
        else
            message.Number(field.attribute, NumberAt(field, block));
    return message;
}

// Sends a write on a link of its own. If the answer's `Result` is 0, the write was carried out: the
// controller is restarted, which takes 2 s. Returns 0 when the answer has a `Result`, whatever its
// value, and another value otherwise.
int SendSet(CWebCtrl& controller, const std::string& message);
// Does the same on the caller's link and stores the answer's `Result` in `*result`.
int SendSet(CWebCtrl& controller, ControlLink& link, const std::string& message, int* result);
