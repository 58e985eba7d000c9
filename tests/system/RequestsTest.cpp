// SPDX-License-Identifier: GPL-2.0-only
// Runs one table of requests/ against the daemon and a scripted recorder:  requests TABLE
//
// To add a case, add a row; to add a table, add a file. A row is a request, and indented below it
// what happens then, in that order. What is one step only fits on the line: REQUEST => STEP.
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
//   /none{1} => {2}                      once for each `with`, whose values stand for {1}, {2}...
//     with ? => 404
//   "GET / HTTP/1.1\nHost: evil.example\n\n" => 403 closed
//   webctrl --port 0 => 2 webctrl: ...   a command line, its status and what it prints
//
// Further lines of a row: `send "..."` more of the request; `has Name: value` a line of the
// answer's head, and of a chunked one the only one besides its own; `prints TEXT` on the daemon's
// console, perhaps in quotes; `hangup NAME CONTENT` a file is written anew, and the daemon told.
// Several answers are several lines. A body that is not given is not compared, `-` is an empty one,
// its last line end is not written. A query's reply comes from another port first where it is `??`.
// Any datagram but those given fails the row. A connection that is to end has `closed` behind the
// status; every other one is the next row's as well. At the table's end the daemon has no
// descriptor more than at its start.
//
// In quotes \n is CR LF and \xNN a byte; replies may be in quotes too. Everywhere {1000*x} is x a
// thousand times, {folder} the daemon's folder, {clock} the time of day. A request in quotes is
// sent twice: whole and, when it is short, byte by byte.

#include <algorithm>
#include <csignal>
#include <ctime>
#include <fstream>
#include <sys/stat.h>

#include "tests/support/Daemon.h"

namespace {

using std::chrono::steady_clock;

constexpr size_t kBytewiseMost = 400;
const char* g_table;

struct Row {
    int line;
    std::vector<std::string> steps; // the request first
    std::vector<std::string> values;
};

// What stands before the first `mark` and behind it; nothing behind where there is none.
std::pair<std::string, std::string> Cut(const std::string& text, const std::string& mark) {
    const size_t at = text.find(mark);
    return {text.substr(0, at), at == std::string::npos ? "" : text.substr(at + mark.size())};
}

bool StartsWith(const std::string& text, const char* start) {
    return text.rfind(start, 0) == 0;
}

void ReplaceAll(std::string& text, const std::string& mark, const std::string& value) {
    for (size_t at = 0; (at = text.find(mark, at)) != std::string::npos; at += value.size())
        text.replace(at, mark.size(), value);
}

// Takes quotes and escapes away, where there are quotes.
std::string Unquote(std::string text) {
    if (!StartsWith(text, "\""))
        return text;
    text = text.substr(1, text.size() - 2);
    ReplaceAll(text, "\\n", "\r\n");
    for (size_t at = 0; (at = text.find("\\x", at)) != std::string::npos; ++at)
        text.replace(at, 4, 1, static_cast<char>(std::stoi(text.substr(at + 2, 2), nullptr, 16)));
    return text;
}

// The row's steps with these values, ` => ` between them, for {1} and on.
std::vector<std::string> StepsWith(const Row& row, const std::string& values) {
    std::vector<std::string> steps = row.steps;
    std::string value, rest = values;
    for (int number = 1; !rest.empty(); ++number) {
        std::tie(value, rest) = Cut(rest, " => ");
        for (std::string& step : steps)
            ReplaceAll(step, "{" + std::to_string(number) + "}", value);
    }
    return steps;
}

class Requests : public SystemTest {
protected:
    void RunTable() {
        std::ifstream table(g_table);
        ASSERT_TRUE(table) << g_table;
        std::string options;
        std::vector<Row> rows;
        int number = 0;
        for (std::string line; std::getline(table, line);) {
            SCOPED_TRACE(std::string(g_table) + ":" + std::to_string(++number));
            const std::string text =
                Expand(line.substr(std::min(line.find_first_not_of(' '), line.size())));
            const auto [verb, rest] = Cut(text, " ");
            const size_t arrow = text.rfind(" => ");
            if (text.empty() || text[0] == '#')
                continue;
            if (verb == "with")
                rows.back().values.push_back(rest);
            else if (line[0] == ' ')
                rows.back().steps.push_back(text);
            else if (verb == "webctrl")
                RunCommand(rest);
            else if (verb == "options")
                options = rest;
            else if (verb == "file")
                WriteTableFile(rest);
            else if (rows.push_back({number, {text.substr(0, arrow)}, {}}); arrow < text.size())
                rows.back().steps.push_back(text.substr(arrow + 4));
        }
        RunRows(options, rows);
    }

private:
    void RunRows(const std::string& options, std::vector<Row>& rows) {
        const int descriptors = Start(options).Descriptors();
        m_recorder = std::make_unique<Recorder>();
        for (Row& row : rows) {
            SCOPED_TRACE(std::string(g_table) + ":" + std::to_string(row.line));
            if (row.values.empty())
                row.values.emplace_back();
            for (const std::string& values : row.values) {
                const std::vector<std::string> steps = StepsWith(row, values);
                SCOPED_TRACE(values);
                RunRow(steps, false, false);
                if (StartsWith(steps[0], "\"") && steps[0].size() < kBytewiseMost)
                    RunRow(steps, true, false);
                if (StartsWith(steps.back(), "fails "))
                    RunRow(steps, false, true);
            }
        }
        m_client.reset();
        EXPECT_TRUE(Running().SettlesAt(descriptors)) << Running().Descriptors();
    }
    void WriteTableFile(const std::string& text) {
        WriteFile(Cut(text, " ").first, Unquote(Cut(text, " ").second));
    }
    void RunCommand(const std::string& text) {
        const auto [command, result] = Cut(text, " => ");
        Daemon daemon(Folder(), command);
        const std::string status = std::to_string(daemon.Wait());
        EXPECT_EQ(status + " " + Cut(daemon.Output(), "\n").first, result);
    }
    std::string Expand(std::string text) const {
        ReplaceAll(text, "{folder}", Folder());
        for (size_t at = 0; (at = text.find('{', at)) != std::string::npos; ++at) {
            const auto [times, rest] = Cut(text.substr(at + 1), "*");
            if (times.empty() || times.find_first_not_of("0123456789") != std::string::npos)
                continue;
            std::string value;
            for (int count = std::stoi(times); count > 0; --count)
                value += Cut(rest, "}").first;
            text.replace(at, text.find('}', at) + 1 - at, value);
        }
        return text;
    }

    void RunRow(const std::vector<std::string>& steps, bool bytewise, bool fails) {
        SCOPED_TRACE(bytewise ? "byte by byte" : fails ? "with a bad reply" : "");
        m_bytewise = bytewise;
        m_sent = steady_clock::now();
        if (m_client == nullptr)
            m_client = std::make_unique<HttpClient>();
        const auto [path, form] = Cut(steps[0], " ");
        Send(StartsWith(steps[0], "\"") ? Unquote(steps[0]) : Request(path, form));
        m_hasBody = !StartsWith(steps[0], "\"HEAD ");
        m_furtherHeaders.clear();
        m_answer = {};
        int exchanges = 0;
        for (const std::string& step : steps) {
            m_furtherHeaders += StartsWith(step, "has ") ? step.substr(4) + "\r\n" : "";
            exchanges += step[0] == '?' || step[0] == '!';
        }
        for (size_t i = 1; i < steps.size(); ++i) {
            const auto [verb, rest] = Cut(steps[i], " ");
            if (verb[0] == '?' || verb == "!")
                TakeExchange(verb, rest, fails && --exchanges == 0);
            else if (verb == "fails" && fails)
                Read("200", rest);
            else if (verb != "fails" && !fails)
                Check(verb, rest);
        }
        if (m_answer.head.empty())
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
    void TakeExchange(const std::string& verb, const std::string& exchange, bool fails) {
        const auto [element, reply] = Cut(exchange, " => ");
        const bool write = verb == "!";
        EXPECT_EQ(m_recorder->Receive(), write ? SetMessage(element) : QueryMessage(element));
        const std::string text = fails                     ? "no XML"
                                 : StartsWith(reply, "\"") ? Unquote(reply)
                                 : write ? SetReply(reply.empty() ? 3 : std::stoi(reply))
                                         : QueryReply(reply);
        if (verb == "??")
            Recorder(6001).Reply(text);
        m_recorder->Reply(text);
    }
    void Check(const std::string& verb, const std::string& rest) {
        if (verb == "send")
            Send(Unquote(rest));
        else if (verb == "has")
            EXPECT_NE(m_answer.head.find("\r\n" + rest + "\r\n"), std::string::npos)
                << m_answer.head;
        else if (verb == "takes")
            EXPECT_GE(steady_clock::now() - m_sent, std::chrono::seconds(std::stoi(rest)));
        else if (verb == "prints")
            Running().WaitFor(Unquote(rest), m_printed);
        else if (verb == "hangup") {
            WriteTableFile(rest);
            kill(Running().Pid(), SIGHUP);
        } else
            Read(verb, rest);
    }
    void Read(const std::string& status, const std::string& rest) {
        m_answer = m_client->Read(m_hasBody);
        const bool closed = Cut(rest, " ").first == "closed";
        const std::string expected = closed ? Cut(rest, " ").second : rest;
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
    steady_clock::time_point m_sent;
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
    setenv("TZ", "ABC-5:45", 1);
    g_table = argc > 1 ? argv[1] : "";
    return RUN_ALL_TESTS();
}
