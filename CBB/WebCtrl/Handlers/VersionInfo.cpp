// SPDX-License-Identifier: GPL-2.0-only
// Application version, section stVersion.
#include "CBB/WebCtrl/Handlers/VersionInfo.h"

#include "CBB/WebCtrl/Handlers/Handlers.h"
#include "CBB/WebCtrl/Handlers/JsonAnswer.h"
#include "CBB/WebCtrl/Handlers/SectionExchange.h"

int getVersionInfoFromNet(CWebCtrl& controller, VersionPara* para) {
    return QueryBlock(controller, "stVersion /", &CConfig_Task::Import_stVersion,
                      &DeviceParaRecord::stVersion, para);
}

void get_VersionInfo(CWebCtrl& controller, std::string_view, JsonAnswer& answer) {
    const HandlerTrace trace(__func__, __LINE__);
    VersionPara para{};
    const int error = getVersionInfoFromNet(controller, &para);
    answer.Member("strFD_AppVersion", para.strAppVer);
    answer.Result(error == 0);
}
