// SPDX-License-Identifier: GPL-2.0-only
// Turns the section elements of the recorder's replies into fields of a DeviceParaRecord.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "CBB/Config/DeviceParaRecord.h"
#include "CBB/Util/KvTable.h"
#include "CBB/Util/Lock.h"

class TiXmlElement;

class CConfig_Task {
public:
    CConfig_Task();
    virtual ~CConfig_Task();
    CConfig_Task(const CConfig_Task&) = delete;
    CConfig_Task& operator=(const CConfig_Task&) = delete;

    // One importer a section. `section` is the element that carries the section, which may be null
    // when there is none; fields whose attributes are missing keep what they hold. A null `record`
    // stands for m_stPara. Result:
    //    0  read
    //    1  G-sensor only: read, and the element asks for a recalibration ("ReCalibrate")
    //   -1  no section, a table row's name without a usable index, or a device number of a length
    //       that cannot be (printed); what was read before stays stored
    int Import_stBaseInfo(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_stDisplay(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_stVideoMirror(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_stNetWorkMode(const TiXmlElement* section, DeviceParaRecord* record);
    // `block` 1 and 2 pick stCMS[1] and [2], 3 and 4 stCMSExtra[0] and [1], anything else stCMS[0].
    int Import_stCMS(const TiXmlElement* section, DeviceParaRecord* record, int block);
    int Import_stWifiAp(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_stWifi(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_stMobileGNet(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_stGB28181(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_stVersion(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_stSystemInfo(const TiXmlElement* section, DeviceParaRecord* record);

    // `block` 0 picks stVehicleInfo[0], anything else [1]. A change of the device number or of a
    // terminal's type, ID or manufacturer clears the authentication code, also one just read.
    int Import_VehicleInfo(const TiXmlElement* section, DeviceParaRecord* record, int block,
                           bool skipPhone);
    int Import_Users(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_Lan(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_GroupNo(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_VideoCrop(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_Video(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_SubStream(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_Osd(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_ChnOsd(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_Record(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_ChnRecord(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_Snapshot(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_AccessExport(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_SerialChn(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_Alarm(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_Power(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_TimingRecord(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_SpeedFatigue(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_TempAlarm(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_GSensor(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_Vda(const TiXmlElement* section, DeviceParaRecord* record);
    int Import_ReserveData(const TiXmlElement* section, DeviceParaRecord* record);
    // Prints "Value: %s=%s\n" for each attribute of the rows that it reads.
    int Import_Ipc(const TiXmlElement* section, DeviceParaRecord* record);

    // ParseAddress of FieldConvert.h.
    static int ParseAddress(const char* text, uint32_t* address);

    DeviceParaRecord m_stPara;

protected:
    // For work beside the imports, which use none of it. A table (0, 1) or mutex (0 to 3) is
    // created on first use and released with the object, so that a query, which needs neither,
    // stays cheap. Null when memory is exhausted.
    KvTable* Table(size_t index);
    MutexHandle Mutex(size_t index);

    CMutex m_stMutex;
    CCondition m_stCondition;
    int m_iMode = 3;

private:
    struct Release {
        void operator()(KvTable* table) const { KvDestroy(table); }
        void operator()(MutexHandle mutex) const { MutexDestroy(mutex); }
    };

    DeviceParaRecord& Target(DeviceParaRecord* record) { return record ? *record : m_stPara; }

    std::unique_ptr<pthread_mutex_t, Release> m_hMutex[4];
    std::unique_ptr<KvTable, Release> m_stTable[2];
};
