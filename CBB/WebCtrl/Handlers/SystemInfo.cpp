// SPDX-License-Identifier: GPL-2.0-only
// System status, section stSystemInfo.
#include "CBB/WebCtrl/Handlers/Handlers.h"
#include "CBB/WebCtrl/Handlers/JsonAnswer.h"
#include "CBB/WebCtrl/Handlers/SectionExchange.h"

namespace {

constexpr uint8_t kWifiClientMode = 1;

using Block = SystemInfoPara;

// One chunk of the answer: the text before the value, the value's field, the text behind it.
// Clients may rely on the chunk boundaries as on the text.
struct StatusChunk {
    const char* before;
    WebField field;
    const char* after;
};

constexpr StatusChunk kUpToWifi[] = {
    {"\"gps\":{ \"ucFD_GpsExist\": \"", WEB_FIELD(GpsExist), "\""},
    {", \"strFD_GpsPos\": \"", WEB_FIELD(GpsPos), "\"},"},
    {"\"gnet\":{ \"ucFD_GNetExist\": \"", WEB_FIELD(GNetExist), "\""},
    {", \"strFD_GNetIMEI\": \"", WEB_FIELD(IMEI), "\""},
    {", \"strFD_GNetRevision\": \"", WEB_FIELD(ATI), "\""},
    {", \"ucFD_SimExist\": \"", WEB_FIELD(SimExist), "\""},
    {", \"ucFD_SimIMSI\": \"", WEB_FIELD(IMSI), "\""},
    {", \"ucFD_SimICCID\": \"", WEB_FIELD(ICCID), "\""},
    {", \"uiFD_GNetSignal\": \"", WEB_FIELD(GNetSignal), "\""},
    {", \"ucFD_GNetDail\": \"", WEB_FIELD(GNetDail), "\"},"},
    {"\"wifi\":{ \"ucFD_WifiExist\": \"", WEB_FIELD(WifiExist), "\""},
};
constexpr StatusChunk kUpToDisks[] = {
    {", \"uiFD_WifiSignal\": \"", WEB_FIELD(WifiSignal), "\""},
    {", \"ucFD_WifiDail\": \"", WEB_FIELD(WifiDail), "\"},"},
    {"\"cms\":{ \"ucFD_CmsStatus\": \"", WEB_FIELD(CmsStatus), "\""},
    {", \"ucFD_JTT808Status\": \"", WEB_FIELD(JTT808Status), "\""},
    {", \"ucFD_GB28181Status\": \"", WEB_FIELD(GB28181Status), "\"},"},
};
constexpr StatusChunk kDisks[] = {
    {"{\"ucFD_DiskExist\": \"", WEB_FIELD(Disk1Exist), "\""},
    {", \"strFD_DiskSize\": \"", WEB_FIELD(Disk1Size), "\"},"},
    {"{\"ucFD_DiskExist\": \"", WEB_FIELD(Disk2Exist), "\""},
    {", \"strFD_DiskSize\": \"", WEB_FIELD(Disk2Size), "\"}"},
};
constexpr StatusChunk kFromIo[] = {
    {"\"io\":{ \"strFD_IOStatus\": \"", WEB_FIELD(IO), "\"},"},
    {"\"version\":{ \"strFD_McuVersion\": \"", WEB_FIELD(McuVer), "\""},
    {", \"strFD_LdrVersion\": \"", WEB_FIELD(BootVer), "\""},
    {", \"strFD_KnlVersion\": \"", WEB_FIELD(KnlVer), "\""},
    {", \"strFD_RfsVersion\": \"", WEB_FIELD(RfsVer), "\""},
    {", \"strFD_AppVersion\": \"", WEB_FIELD(AppVer), "\""},
    {", \"strFD_DbtVersion\": \"", WEB_FIELD(DBVer), "\"},"},
    {"\"acc\":{ \"ucFD_AccStatus\": \"", WEB_FIELD(ACC), "\"},"},
};

template <size_t N>
void Send(JsonAnswer& answer, const StatusChunk (&chunks)[N], const SystemInfoPara& status) {
    for (const StatusChunk& chunk : chunks)
        if (chunk.field.kind == FieldKind::Text)
            answer.Chunk(chunk.before, TextAt(chunk.field, &status), chunk.after, chunk.field.size);
        else
            answer.Chunk(chunk.before, static_cast<int>(NumberAt(chunk.field, &status)),
                         chunk.after);
}

int getSystemInfoFromNet(CWebCtrl& controller, SystemInfoPara* status) {
    return QueryBlock(controller, "stSystemInfo /", &CConfig_Task::Import_stSystemInfo,
                      &DeviceParaRecord::stSystemInfo, status);
}

} // namespace

void get_SystemInfo(CWebCtrl& controller, std::string_view, JsonAnswer& answer) {
    const HandlerTrace trace(__func__, __LINE__);
    SystemInfoPara status{};
    const int error = getSystemInfoFromNet(controller, &status);
    answer.Chunk("{ ");
    Send(answer, kUpToWifi, status);
    answer.Chunk(", \"ucFD_WifiMode\": \"", status.WifiMode == kWifiClientMode ? "Client" : "AP",
                 "\"");
    Send(answer, kUpToDisks, status);
    answer.Chunk("\"disk\":{");
    answer.Chunk("\"list\":[");
    Send(answer, kDisks, status);
    answer.Chunk("]},");
    Send(answer, kFromIo, status);
    answer.Result(error == 0, "");
}
