// Who may connect, and what the sandbox of the reference host keeps scripts from.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <set>

#include "ChildProcess.h"
#include "ForkedProcess.h"
#include "PeerHost.h"
#include "TemporaryDirectory.h"
#include "host/LinkServer.h"
#include "host/ScriptEngine.h"
#include "link/SharedSegments.h"
#include "link/TANClientInterProcess.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr int kHost = 1;
constexpr uid_t kNobody = 65534;

CServerReply Echo(std::string const& request) {
    return {request, "", 0};
}

int StatusOfAnotherUser() {
    if (setuid(kNobody) != 0) return 99;
    CTANClientInterProcess client;
    if (client.GetCurrentTANHost() != -1 || !client.NeedsUpdate()) return 98;
    std::string strRequest = "x", strReply;
    return client.SendTANMessage(kHost, strRequest, strReply, 1000);
}

TEST(LinkPrivacy, SegmentsOfAnotherUserAreRefusedByTheSystem) {
    if (geteuid() != 0) GTEST_SKIP() << "only the superuser can become another user";
    CForkedProcess other([] {
        while (access("/dev/shm/TAN_Host_1", F_OK) != 0) usleep(1000);
        return StatusOfAnotherUser();
    });
    const CLinkServer server(kHost, true, Echo);
    EXPECT_EQ(other.Wait(60s), EACCES);
}

TEST(LinkPrivacy, SegmentsStayPrivateWhateverTheUsersMask) {
    const mode_t nMask = umask(0);
    {
        const CLinkServer server(kHost, true, Echo);
        const std::string strMessages = szHostSegmentPrefix + std::to_string(kHost);
        for (std::string const& strName : {std::string(szDirectorySegment), strMessages}) {
            struct stat status {};
            ASSERT_EQ(stat(("/dev/shm/" + strName).c_str(), &status), 0) << strName;
            EXPECT_EQ(status.st_mode & 07777, 0600u) << strName;
        }
    }
    umask(nMask);
}

// The inodes of every socket that a process has.
std::set<std::string> SocketsOf(pid_t nProcess) {
    std::set<std::string> sockets;
    for (auto const& entry : fs::directory_iterator("/proc/" + std::to_string(nProcess) + "/fd")) {
        std::error_code gone;
        const std::string strTarget = fs::read_symlink(entry.path(), gone).string();
        if (strTarget.starts_with("socket:")) sockets.insert(strTarget);
    }
    return sockets;
}

TEST(LinkPrivacy, NeitherHostNorClientHasASocket) {
    const std::set<std::string> before = SocketsOf(getpid());
    const CTemporaryDirectory directory;
    CChildProcess host({TAVARIN_HOST_PROGRAM}, directory.File("out"), directory.File("err"));
    CTANClientInterProcess client;
    while (client.GetCurrentIdFromMainDirectory() != kHost) usleep(10'000);
    std::string strRequest = "print(1)", strReply;
    EXPECT_EQ(client.SendTANMessage(kHost, strRequest, strReply, 5000), 0);
    std::set<std::string> ofHost = SocketsOf(host.Id());
    for (std::string const& strInherited : before) ofHost.erase(strInherited);
    EXPECT_TRUE(ofHost.empty());
    EXPECT_EQ(SocketsOf(getpid()), before);
    host.Signal(SIGTERM);
    EXPECT_EQ(host.Wait(), 0);
}

class CSandbox : public testing::Test {
protected:
    CSandbox() : m_engine(m_session, {{}, m_directory.File("audio"), 1 << 20}) {}

    std::string Printed(std::string const& strScript) { return m_engine.Run(strScript).strPrinted; }
    std::string Error(std::string const& strScript) { return m_engine.Run(strScript).strError; }

    CTemporaryDirectory m_directory;
    CSession m_session{{"Guide"}, 48000};
    CScriptEngine m_engine;
};

TEST_F(CSandbox, HasNoWayToReadAFile) {
    m_directory.Write("secret", "secret");
    const std::string strPath = m_directory.File("secret");
    EXPECT_NE(Error("io.open('" + strPath + "')"), "");
    EXPECT_NE(Error("for line in io.lines('" + strPath + "') do print(line) end"), "");
    EXPECT_NE(Error("dofile('" + strPath + "')"), "");
    EXPECT_NE(Error("loadfile('" + strPath + "')"), "");
    EXPECT_NE(Error("require('" + strPath + "')"), "");
    const CScriptResult added =
        m_engine.Run("SelectScriptDocument() AddAudioRegion(GetTrackID(0), '" + strPath +
                     "', true, false, 0, 0, 1)");
    EXPECT_NE(added.strError, "");
    EXPECT_EQ(added.strError.find("secret\n"), std::string::npos);
}

TEST_F(CSandbox, HasNoWayToWriteOrRemoveAFile) {
    const std::string strPath = m_directory.Write("kept", "kept");
    EXPECT_NE(Error("io.open('" + strPath + "', 'w'):write('x')"), "");
    EXPECT_NE(Error("io.output('" + strPath + "')"), "");
    EXPECT_NE(Error("os.remove('" + strPath + "')"), "");
    EXPECT_NE(Error("os.rename('" + strPath + "', '" + strPath + "2')"), "");
    EXPECT_NE(Error("os.tmpname()"), "");
    EXPECT_EQ(m_directory.Read("kept"), "kept");
}

TEST_F(CSandbox, HasNoWayToStartAProcess) {
    const std::string strProof = m_directory.File("proof");
    EXPECT_NE(Error("os.execute('touch " + strProof + "')"), "");
    EXPECT_NE(Error("io.popen('touch " + strProof + "')"), "");
    EXPECT_FALSE(m_directory.Has("proof"));
}

TEST_F(CSandbox, CannotEndTheHost) {
    EXPECT_NE(Error("os.exit(1)"), "");
    EXPECT_EQ(Printed("print('alive')"), "alive\n");
}

TEST_F(CSandbox, HasNoWayToSeeTheEnvironmentOrTheClock) {
    EXPECT_NE(Error("print(os.getenv('PATH'))"), "");
    EXPECT_NE(Error("print(os.time())"), "");
    EXPECT_NE(Error("print(os.clock())"), "");
}

TEST_F(CSandbox, HasNoWayToMakeOrLoadBytecode) {
    EXPECT_NE(Error("string.dump(print)"), "");
    EXPECT_NE(Error("('').dump(function() end)"), "");
    EXPECT_NE(Error("load('return 1')"), "");
    EXPECT_NE(Error("load('\\27Lua', '', 'b')"), "");
    EXPECT_NE(Error("\x1bLua"), "");
}

TEST_F(CSandbox, HasNoWayIntoTheInterpreter) {
    for (const char* szName :
         {"debug.getregistry", "debug.getupvalue", "debug.sethook", "package.loadlib",
          "collectgarbage", "coroutine.create", "getfenv", "newproxy"}) {
        EXPECT_NE(Error(std::string(szName) + "()"), "") << szName;
    }
}

TEST_F(CSandbox, NamesOfTheWorldDoNotLeadOut) {
    EXPECT_EQ(Printed(R"(
        local seen, queue, out = {}, {_G}, {}
        while #queue > 0 do
            local t = table.remove(queue)
            for k, v in pairs(t) do
                if type(k) == 'string' and (k == 'open' or k == 'execute' or k == 'popen' or
                    k == 'dump' or k == 'getregistry' or k == 'loadlib') then out[#out + 1] = k end
                if type(v) == 'table' and not seen[v] then seen[v] = true queue[#queue + 1] = v end
            end
        end
        print(#out))"),
              "0\n");
}

}  // namespace
