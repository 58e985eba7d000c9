// SPDX-License-Identifier: GPL-2.0-only
// Runs one table of requests/ against the daemon and a scripted recorder:  requests TABLE
//
// To add a case, add a row; to add a table, add a file. A row is a request, and indented below it
// what happens then, in that order. Rows without an exchange fit on a line: REQUEST => ANSWER.
//
//   # a comment
//   options --allow-host a.example       the daemon's, before all rows
//   file sub/page.shtml CONTENT          below the web root, before all rows
//
//   /get_LangInfo                        a GET; with a form behind the path a POST
//     ? stDisplay => <stDisplay strLanguage="CN"/>      a query is sent, and what it is replied
//     200 { "strLanguage": "CN"|, "result": 1 }         status and body; `|` between chunks
//     fails { "strLanguage": "EN"|, "result": 0 }       body when the last reply is no XML
//   /set_LangInfo strLanguage=CN
//     ! <stDisplay strLanguage="CN" /> => 0             a write is sent, and the Result of its
//     200 {"result": 1 }                                reply, 3 where none is given; a row without
//     takes 2                                           status has this one; seconds, at least
//   "GET / HTTP/1.1\nHost: evil.example\n\n" => 403 closed
//   webctrl --port 0 => 2 webctrl: ...   a command line, its status and what it prints
//
// Further lines of a row: `send "..."` more of the request; `has Name: value` a line of the
// answer's head, and of a chunked one the only one besides its own; `prints TEXT` on the daemon's
// console, perhaps in quotes; `vanish` the client closes. Several answers are several lines. A body
// that is not given is not compared, `-` is an empty one, its last line end is not written. Any
// datagram but those given fails the row. A connection that is to end has `closed` behind the
// status; every other one is the next row's as well.
//
// In quotes \n is CR LF, \r \t \\ \xNN are bytes; replies may be in quotes too. Everywhere
// {1000*x} is x a thousand times, {folder} the daemon's folder, {clock} the time of day. A request
// in quotes is sent twice: whole and, when it is short, byte by byte.

#include <algorithm>
#include <ctime>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>
#include <sys/stat.h>

#include "tests/support/HttpClient.h"
#include "tests/support/Recorder.h"
#include "tests/system/Daemon.h"

namespace {

constexpr size_t kBytewiseMost = 400;
const char* g_table;

struct Row {
    int line;
    std::string request;
    std::vector<std::string> steps;
};

// What stands before the first `mark` and behind it; nothing behind where there is none.
std::pair<std::string, std::string> Cut(const std::string& text, const std::string& mark) {
    const size_t at = text.find(mark);
    return {text.substr(0, at), at == std::string::npos ? "" : text.substr(at + mark.size())};
}

// Takes quotes and escapes away.
std::string Unquote(const std::string& quoted) {
    std::string bytes;
    for (size_t at = 1; at + 1 < quoted.size(); ++at) {
        if (quoted[at] != '\\') {
            bytes += quoted[at];
            continue;
        }
        const char escape = quoted[++at];
        if (escape == 'x') {
            bytes += static_cast<char>(std::stoi(quoted.substr(at + 1, 2), nullptr, 16));
            at += 2;
        } else {
            bytes += escape == 'n' ? "\r\n"
                                   : std::string(1, escape == 'r'   ? '\r'
                                                    : escape == 't' ? '\t'
                                                                    : escape);
        }
    }
    return bytes;
}

std::vector<std::string> Words(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

bool IsQuoted(const std::string& text) {
    return !text.empty() && text[0] == '"';
}

class Requests : public SystemTest {
protected:
    void RunTable() {
        std::ifstream table(g_table);
        ASSERT_TRUE(table) << g_table;
        std::vector<std::string> options;
        std::vector<Row> rows;
        int number = 0;
        for (std::string line; std::getline(table, line);) {
            ++number;
            const std::string text =
                Expand(line.substr(std::min(line.find_first_not_of(' '), line.size())));
            const auto [verb, rest] = Cut(text, " ");
            if (text.empty() || text[0] == '#')
                continue;
            if (line[0] == ' ')
                rows.back().steps.push_back(text);
            else if (verb == "webctrl")
                RunCommand(number, rest);
            else if (verb == "options")
                options = Words(rest);
            else if (verb == "file")
                WriteTableFile(Cut(rest, " "));
            else
                rows.push_back(ReadRow(number, text));
        }
        if (rows.empty())
            return;
        Start(options);
        m_recorder = std::make_unique<Recorder>();
        for (const Row& row : rows) {
            RunRow(row, false, false);
            if (IsQuoted(row.request) && row.request.size() < kBytewiseMost)
                RunRow(row, true, false);
            if (!row.steps.empty() && row.steps.back().find("fails ") == 0)
                RunRow(row, false, true);
        }
    }

private:
    void WriteTableFile(const std::pair<std::string, std::string>& file) {
        WriteFile(file.first, IsQuoted(file.second) ? Unquote(file.second) : file.second);
    }
    static Row ReadRow(int number, const std::string& text) {
        const size_t arrow = text.rfind(" => ");
        if (arrow == std::string::npos)
            return {number, text, {}};
        return {number, text.substr(0, arrow), {text.substr(arrow + 4)}};
    }
    void RunCommand(int line, const std::string& text) {
        const auto [command, result] = Cut(text, " => ");
        const auto [status, output] = Cut(result, " ");
        Daemon daemon(Folder(), Words(command));
        EXPECT_EQ(std::to_string(daemon.Wait()), status) << g_table << ":" << line;
        EXPECT_EQ(Cut(daemon.Output(), "\n").first, output) << g_table << ":" << line;
    }
    std::string Expand(std::string text) const {
        for (size_t at = 0; (at = text.find('{', at)) != std::string::npos; ++at) {
            const size_t end = text.find('}', at),
                         star = text.find_first_not_of("0123456789", at + 1);
            std::string value;
            if (text.compare(at, 8, "{folder}") == 0)
                value = Folder();
            else if (end == std::string::npos || star == at + 1 || text[star] != '*')
                continue;
            else
                for (int count = std::stoi(text.substr(at + 1)); count > 0; --count)
                    value += text.substr(star + 1, end - star - 1);
            text.replace(at, end + 1 - at, value);
        }
        return text;
    }

    void RunRow(const Row& row, bool bytewise, bool fails) {
        const std::string place = std::string(g_table) + ":" + std::to_string(row.line);
        SCOPED_TRACE(place + (bytewise ? " byte by byte" : fails ? " with a bad reply" : ""));
        m_bytewise = bytewise;
        if (m_client == nullptr)
            m_client = std::make_unique<HttpClient>();
        const auto [path, form] = Cut(row.request, " ");
        Send(IsQuoted(row.request) ? Unquote(row.request) : Request(path, form));
        m_hasBody = row.request.find("\"HEAD ") != 0;
        m_furtherHeaders.clear();
        for (const std::string& step : row.steps)
            m_furtherHeaders += step.find("has ") == 0 ? step.substr(4) + "\r\n" : "";
        const auto isExchange = [](const std::string& step) {
            return step[0] == '?' || step[0] == '!';
        };
        auto exchanges = std::count_if(row.steps.begin(), row.steps.end(), isExchange);
        const bool hasStatus =
            std::any_of(row.steps.begin(), row.steps.end(),
                        [](const std::string& step) { return isdigit(step[0]) != 0; });
        for (const std::string& step : row.steps) {
            const auto [verb, rest] = Cut(step, " ");
            if (isExchange(step))
                TakeExchange(verb == "!", rest, fails && --exchanges == 0);
            else if (verb == "fails" && fails)
                Read("200", rest);
            else if (verb != "fails" && !fails)
                Check(verb, rest);
        }
        if (!hasStatus && m_client != nullptr)
            Read("200", "{\"result\": 1 }");
        EXPECT_FALSE(m_recorder->HasMore()) << m_recorder->Receive();
        const bool isSound = m_answer.body.find("\"result\": 1 }") != std::string::npos;
        EXPECT_FALSE(isSound && Running().Output().find("ailed", m_printed) != std::string::npos);
        m_printed = Running().Output().size();
        if (HasFailure())
            m_client.reset();
    }
    void Send(const std::string& bytes) {
        const size_t piece = m_bytewise ? 1 : bytes.size();
        for (size_t at = 0; at < bytes.size(); at += piece)
            m_client->Send(bytes.substr(at, piece));
    }
    void TakeExchange(bool write, const std::string& exchange, bool fails) {
        const auto [element, reply] = Cut(exchange, " => ");
        EXPECT_EQ(m_recorder->Receive(), write ? SetMessage(element) : QueryMessage(element));
        m_recorder->Reply(fails             ? "no XML"
                          : IsQuoted(reply) ? Unquote(reply)
                          : write           ? SetReply(reply.empty() ? 3 : std::stoi(reply))
                                            : QueryReply(reply));
    }
    void Check(const std::string& verb, const std::string& rest) {
        if (verb == "send")
            Send(Unquote(rest));
        else if (verb == "has")
            EXPECT_NE(m_answer.head.find("\r\n" + rest + "\r\n"), std::string::npos)
                << m_answer.head;
        else if (verb == "takes")
            EXPECT_GE(m_answer.seconds, std::stod(rest) - 0.05);
        else if (verb == "prints")
            Running().WaitFor(IsQuoted(rest) ? Unquote(rest) : rest, 1, m_printed);
        else if (verb == "vanish")
            m_client.reset();
        else
            Read(verb, rest);
    }
    void Read(const std::string& status, const std::string& rest) {
        m_answer = m_client->Read(20, m_hasBody);
        const bool closed = Cut(rest, " ").first == "closed";
        std::string expected = closed ? Cut(rest, " ").second : rest;
        std::string body = m_answer.body;
        if (!m_answer.chunks.empty()) {
            EXPECT_EQ(m_answer.head, "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n" +
                                         m_furtherHeaders + "\r\n");
            body.clear();
            for (const std::string& chunk : m_answer.chunks)
                body += (body.empty() ? "" : "|") + chunk;
        } else if (!body.empty() && body.back() == '\n') {
            body.pop_back();
        }
        MaskClock(expected.find("{clock}"), body);
        EXPECT_EQ(m_answer.head.substr(0, 13), "HTTP/1.1 " + status + " ") << body;
        EXPECT_EQ(body, expected.empty() ? body : expected == "-" ? "" : expected);
        if (closed) {
            EXPECT_TRUE(m_client->ClosedWithin(5));
            m_client.reset();
        }
    }
    // The time at `at`, once seen to be the time of day, becomes {clock}.
    static void MaskClock(size_t at, std::string& body) {
        tm told{};
        if (at >= body.size() || strptime(body.c_str() + at, "%Y-%m-%d %H:%M:%S", &told) == nullptr)
            return;
        told.tm_isdst = -1;
        EXPECT_NEAR(static_cast<double>(mktime(&told)), static_cast<double>(time(nullptr)), 20);
        body.replace(at, 19, "{clock}");
    }

    std::unique_ptr<Recorder> m_recorder;
    std::unique_ptr<HttpClient> m_client;
    Answer m_answer;
    std::string m_furtherHeaders;
    size_t m_printed = 0;
    bool m_bytewise = false, m_hasBody = true;
};

TEST_F(Requests, AreAnsweredAsTheTableSays) {
    RunTable();
}

} // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    umask(027); // nobody else may read a login file
    g_table = argc > 1 ? argv[1] : "";
    return RUN_ALL_TESTS();
}
