#include <sys/socket.h>

#include <cstring>
#include <lua.hpp>

#include "bench/exchange/ExchangePeer.h"

namespace {

constexpr char szScript[] = "print(GetUpdateCount())\n";

struct CLuaReply {
    char text[kReplySize] = {};
    std::size_t nLength = 0;
};

int Print(lua_State* pState) {
    auto& reply = *static_cast<CLuaReply*>(lua_touserdata(pState, lua_upvalueindex(1)));
    std::size_t nLength = 0;
    const char* const pText = luaL_tolstring(pState, 1, &nLength);
    Check(reply.nLength + nLength + 1 < sizeof reply.text, "a wrong script");
    std::memcpy(reply.text + reply.nLength, pText, nLength);
    reply.nLength += nLength;
    reply.text[reply.nLength++] = '\n';
    return 0;
}

int GetUpdateCount(lua_State* pState) {
    lua_pushinteger(pState, 1);
    return 1;
}

void RunScript(const char* pScript, std::size_t nLength, CLuaReply& reply) {
    lua_State* const pState = luaL_newstate();
    luaL_openlibs(pState);
    lua_register(pState, "GetUpdateCount", GetUpdateCount);
    lua_pushlightuserdata(pState, &reply);
    lua_pushcclosure(pState, Print, 1);
    lua_setglobal(pState, "print");
    const bool fDone = luaL_loadbuffer(pState, pScript, nLength, "=script") == LUA_OK &&
                       lua_pcall(pState, 0, 0, 0) == LUA_OK;
    lua_close(pState);
    Check(fDone, "the script failed");
}

void Serve(int nSocket, EPlacement placement) {
    PlaceServer(placement);
    for (char request[kRequestSize];;) {
        const ssize_t nRead = read(nSocket, request, sizeof request);
        if (nRead <= 0) return;
        CLuaReply reply;
        RunScript(request, static_cast<std::size_t>(nRead), reply);
        if (write(nSocket, reply.text, reply.nLength) < 0) return;
    }
}

class CLuaSocketPeer : public CExchangePeer {
public:
    explicit CLuaSocketPeer(CServerManner const& manner)
        : m_ends(MakePair()), m_server([&] { Serve(m_ends.nServer, manner.placement); }) {}
    ~CLuaSocketPeer() override {
        close(m_ends.nClient);
        close(m_ends.nServer);
    }

    void Call() override {
        char reply[kReplySize];
        Check(write(m_ends.nClient, szScript, sizeof szScript - 1) > 0 &&
                  read(m_ends.nClient, reply, sizeof reply) == 2 && reply[0] == '1',
              "the socket failed");
    }

private:
    struct CEnds {
        int nClient;
        int nServer;
    };

    static CEnds MakePair() {
        int ends[2];
        Check(socketpair(AF_UNIX, SOCK_STREAM, 0, ends) == 0, "no sockets");
        return {ends[0], ends[1]};
    }

    CEnds m_ends;
    CChild m_server;
};

}  // namespace

std::unique_ptr<CExchangePeer> MakeLuaSocketPeer(CServerManner const& manner) {
    return std::make_unique<CLuaSocketPeer>(manner);
}
