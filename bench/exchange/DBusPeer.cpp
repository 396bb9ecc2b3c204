#include <dbus/dbus.h>
#include <poll.h>

#include <cstring>

#include "bench/exchange/ExchangePeer.h"

// Method calls from one process straight to the other, with no bus daemon between them.

namespace {

constexpr char szObject[] = "/bench";
constexpr char szInterface[] = "bench.Echo";

struct CAcceptor {
    DBusWatch* pWatch = nullptr;
    DBusConnection* pConnection = nullptr;
};

dbus_bool_t AddWatch(DBusWatch* pWatch, void* pData) {
    static_cast<CAcceptor*>(pData)->pWatch = pWatch;
    return TRUE;
}

void IgnoreWatch(DBusWatch*, void*) {}

void TakeConnection(DBusServer*, DBusConnection* pConnection, void* pData) {
    static_cast<CAcceptor*>(pData)->pConnection = dbus_connection_ref(pConnection);
}

DBusConnection* Accept(DBusServer* pServer) {
    CAcceptor acceptor;
    dbus_server_set_new_connection_function(pServer, TakeConnection, &acceptor, nullptr);
    dbus_server_set_watch_functions(pServer, AddWatch, IgnoreWatch, IgnoreWatch, &acceptor,
                                    nullptr);
    while (acceptor.pConnection == nullptr) {
        pollfd listener{dbus_watch_get_unix_fd(acceptor.pWatch), POLLIN, 0};
        poll(&listener, 1, -1);
        dbus_watch_handle(acceptor.pWatch, DBUS_WATCH_READABLE);
    }
    return acceptor.pConnection;
}

void AddText(DBusMessage* pMessage, std::string const& text) {
    const char* const szText = text.c_str();
    dbus_message_append_args(pMessage, DBUS_TYPE_STRING, &szText, DBUS_TYPE_INVALID);
}

class CDBusPeer : public CExchangePeer {
public:
    explicit CDBusPeer(CServerManner const& manner)
        : m_strAddress("unix:path=" + m_path.Path()), m_server([&] { Serve(manner); }) {
        for (int nTry = 0; nTry < 500 && m_pConnection == nullptr; ++nTry) {
            m_pConnection = dbus_connection_open_private(m_strAddress.c_str(), nullptr);
            if (m_pConnection == nullptr) SleepUs(10'000);
        }
        Check(m_pConnection != nullptr, "D-Bus does not connect");
    }
    ~CDBusPeer() override {
        dbus_connection_close(m_pConnection);
        dbus_connection_unref(m_pConnection);
    }

    void Call() override {
        DBusMessage* const pCall =
            dbus_message_new_method_call(nullptr, szObject, szInterface, "Call");
        AddText(pCall, m_strRequest);
        DBusMessage* const pReply =
            dbus_connection_send_with_reply_and_block(m_pConnection, pCall, -1, nullptr);
        const char* szReply = nullptr;
        Check(pReply != nullptr && dbus_message_get_args(pReply, nullptr, DBUS_TYPE_STRING,
                                                         &szReply, DBUS_TYPE_INVALID),
              "D-Bus failed");
        Check(std::strlen(szReply) == kReplySize, "D-Bus gave a wrong reply");
        dbus_message_unref(pReply);
        dbus_message_unref(pCall);
    }

private:
    void Serve(CServerManner const& manner) {
        PlaceServer(manner.placement);
        DBusServer* const pServer = dbus_server_listen(m_strAddress.c_str(), nullptr);
        Check(pServer != nullptr, "D-Bus does not listen");
        DBusConnection* const pConnection = Accept(pServer);
        const std::string strReply(kReplySize, 'r');
        while (dbus_connection_read_write(pConnection, -1)) {
            while (DBusMessage* const pCall = dbus_connection_pop_message(pConnection)) {
                if (dbus_message_is_method_call(pCall, szInterface, "Call")) {
                    Work(manner);
                    DBusMessage* const pReply = dbus_message_new_method_return(pCall);
                    AddText(pReply, strReply);
                    dbus_connection_send(pConnection, pReply, nullptr);
                    dbus_connection_flush(pConnection);
                    dbus_message_unref(pReply);
                }
                dbus_message_unref(pCall);
            }
        }
    }

    CSocketPath m_path{"dbus"};
    std::string m_strAddress;
    CChild m_server;
    DBusConnection* m_pConnection = nullptr;
    std::string m_strRequest = std::string(kRequestSize, 'q');
};

}  // namespace

std::unique_ptr<CExchangePeer> MakeDBusPeer(CServerManner const& manner) {
    return std::make_unique<CDBusPeer>(manner);
}
