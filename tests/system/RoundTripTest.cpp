// SPDX-License-Identifier: GPL-2.0-only
// Every field that can be written, there and back: over HTTP to the simulator, which stores it, and
// from there over HTTP again.

#include <gtest/gtest.h>
#include <set>

#include "tests/system/Api.h"

namespace {

// `~` in a table's value: what each of three languages would take for its own, and UTF-8 of three
// and four bytes. With the letter in front of it it just fits into a device number.
constexpr char kHostile[] = "\"&<\\\u6DF1\U0001F68C";
constexpr char kHostileXml[] = "&quot;&amp;&lt;\\\u6DF1\U0001F68C";
constexpr char kHostileJson[] = "\\\"&\\u003c\\\\\u6DF1\U0001F68C";

std::string Expand(std::string value, const char* hostile) {
    const size_t at = value.find('~');
    return at == std::string::npos ? value : value.replace(at, 1, hostile);
}

// A form field, the attribute that it becomes (`=`: of the same name, `-`: none) and a value for
// each of two writes. `SENT>STORED`: what the recorder stores is another text; what is read is
// again SENT.
struct Field {
    Field(const std::string& row, int write) {
        std::istringstream stream(row);
        for (stream >> form >> attribute >> sent; write > 0; --write)
            stream >> sent;
        attribute = attribute == "=" ? form : attribute;
        const size_t arrow = sent.find('>');
        stored = Expand(sent.substr(arrow == std::string::npos ? 0 : arrow + 1), kHostileXml);
        read = Expand(sent.substr(0, arrow), kHostileJson);
        sent = Expand(sent.substr(0, arrow), kHostile);
    }
    std::string form, attribute, sent, stored, read;
};

struct Group {
    const char* path; // behind /get_ and /set_; a query is not looked at
    const char* fields;
};

const Group kGroups[] = {
    {"LangInfo", "strLanguage = EN>US CN"},
    {"BaseInfo", "strFD_DeviceNo = BUS-0234 a~|ucFD_TimeZone = 8 255|ucFD_GpsSTFlag = 1 0|"
                 "strFD_CurTime = 2026-03-14 b~"},
    {"MirrorInfo", "strFD_LeftRight ucFD_LeftRight 0 1|strFD_UpDown ucFD_UpDown 1 0"},
    {"NetWModeInfo", "ucFD_NetWType ucFD_NetType 7 255|usFD_GPSInterval = 30 65535"},
    {"VCmsInfo", "ucFD_AddressType = 0 0|strFD_Address uiFD_IP 198.51.100.1>192.0.2.1 203.0.113.77|"
                 "usFD_Port = 6608 65535"},
    {"VCmsInfo?domain",
     "ucFD_AddressType = 1 255|strFD_Address strFD_Domain cms.example a~|usFD_Port = 1 2"},
    {"WifiInfo",
     "ucFD_WorkMode = 1 255|strFD_SSID = Depot a~|strFD_Passwd = key b~|ucFD_AuthMode = 11 254|"
     "ucFD_CryptType = 12 253|ucFD_DhcpEnableFlag = 13 252"},
    {"GNetInfo",
     "ucFD_NetType = 5 255|strFD_Apn = apn a~|strFD_PhoneNo = *99# b~|strFD_UserName = user c~|"
     "strFD_UserPasswd = secret d~"},
    {"GB28181Info",
     "ucFD_GB28181Enable ucFD_Enable 1 1>129|ucFD_StreamType ucFD_Enable 0>1 1>129|"
     "strFD_Manufacturer = maker a~|strFD_ModelName = model b~|strFD_ServerIp = 192.0.2.8 c~|"
     "usFD_ServerPort = 5060 65535|strFD_ServerID = server d~|strFD_DeviceId = device e~|"
     "usFD_DevicePort = 5062 65534|strFD_DeviceUser = user f~|strFD_DevicePass = pass g~|"
     "strFD_LensId = *lens*>lens *h~*>h~"},
};

std::ostream& operator<<(std::ostream& out, const Group& group) {
    return out << group.path;
}

class RoundTrip : public Api {
protected:
    void StartSimulator(Texts options) {
        options.emplace_back("--verbose");
        m_simulator.reset(); // its port is free again
        m_simulator = std::make_unique<Daemon>(Folder(), options, RECORDER_SIM_EXE);
        m_simulator->WaitFor("listening on");
    }
    // Gives the last datagram that the simulator got.
    std::string Write(const Group& group, int write) {
        std::string body;
        for (const std::string& row : Split(group.fields)) {
            const Field field(row, write);
            body += "&" + field.form + "=" + PercentEncode(field.sent);
        }
        EXPECT_EQ(Ask(std::string("/set_") + group.path, body), "{\"result\": 1 }");
        const std::string output = m_simulator->Output();
        const size_t at = output.rfind("\n<- ") + 1;
        return output.substr(at, output.find('\n', at) - at);
    }
    static std::string Ask(const std::string& path, const std::string& body = "") {
        HttpClient client;
        client.Send(Request(path, body));
        return client.Read().body;
    }

private:
    std::unique_ptr<Daemon> m_simulator;
};
class OfGroup : public RoundTrip, public testing::WithParamInterface<Group> {};

// Checks that the table's values, all of them and no others, are in a datagram and in an answer.
void Check(const Group& group, int write, const std::string& datagram, const std::string& answer) {
    std::set<std::string> members, attributes;
    for (const std::string& row : Split(group.fields)) {
        const Field field(row, write);
        if (field.attribute != "-") {
            EXPECT_EQ(Count(datagram, " " + field.attribute + "=\"" + field.stored + "\""), 1)
                << row;
            attributes.insert(field.attribute);
        }
        members.insert(field.form);
        // What is read as the clock is the daemon's own.
        if (field.form != "strFD_CurTime") {
            EXPECT_EQ(Count(answer, "\"" + field.form + "\": \"" + field.read + "\""), 1) << row;
        }
    }
    EXPECT_EQ(Count(datagram, "=\""), static_cast<int>(attributes.size()) + 1) << datagram;
    EXPECT_EQ(Count(answer, "\": \"") - Count(answer, "\"iVideoChnCount\""),
              static_cast<int>(members.size()));
    EXPECT_EQ(Count(answer, ", \"result\": 1 }"), 1) << answer;
}

TEST_P(OfGroup, EachFieldIsReadAsItWasWritten) {
    StartSimulator({});
    for (const int write : {0, 1}) {
        const std::string datagram = Write(GetParam(), write);
        Check(GetParam(), write, datagram, Ask(std::string("/get_") + GetParam().path));
    }
}
INSTANTIATE_TEST_SUITE_P(RoundTrip, OfGroup, testing::ValuesIn(kGroups));

// The access point's settings are sent when the work mode before them was not carried out. Here it
// gets no answer; what was stored is read by way of a recorder that answers.
TEST_F(RoundTrip, TheAccessPointIsReadAsItWasWritten) {
    const std::string state = Folder() + "/state.xml";
    const Group group = {"WifiInfo",
                         "ucFD_WorkMode - 2|strFD_SSID = a~|strFD_Passwd = b~|"
                         "ucFD_AuthMode = 254|ucFD_CryptType = 253|ucFD_DhcpEnableFlag = 252"};
    StartSimulator({"--state", state, "--set", "stWifi.ucFD_WorkMode=2", "--silent", "stWifi"});
    const std::string datagram = Write(group, 0);
    StartSimulator({"--state", state});
    Check(group, 0, datagram, Ask("/get_WifiInfo"));
}

} // namespace
