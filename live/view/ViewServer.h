// SPDX-License-Identifier: Apache-2.0
// Serves the live view over HTTP.
#pragma once

#include "live/transport/ListeningSocket.h"
#include "live/view/Admission.h"
#include "live/view/Audience.h"
#include "live/view/ViewMailbox.h"
#include "live/view/Viewer.h"

#include <atomic>
#include <list>
#include <memory>
#include <string>
#include <thread>

struct MHD_Connection;
struct MHD_Daemon;
struct MHD_Response;

namespace Veskar::Live {

/// An HTTP server on a thread of its own, with these resources:
///   /         the page
///   /events   what happens, as server-sent events; ?select=system:12 adds the decisions about a
///             track
///   /picture  the newest picture of the camera, if there are any
/// and nothing else: no file is ever served. A viewer that reads slowly gets the newest state when
/// it has read the one before; one that reads nothing for a while is let go.
class ViewServer {
public:
    static constexpr unsigned mostConnections = 32;
    static constexpr std::size_t mostViewers = 16;
    /// Connections on which nothing moves end after this time, s.
    static constexpr unsigned patience = 15;

    /// @param place where it listens
    /// @param admission decides about requests
    /// @param page HTML
    /// @param hello what each viewer is told first, JSON on one line
    /// @param mailbox hands over what is told to viewers; must outlive the server
    /// @param audience receives who watches; must outlive the server
    /// @throw InputError when it cannot listen there
    ViewServer(const NetworkPlace& place, Admission admission, std::string page,
               const std::string& hello, ViewMailbox& mailbox, Audience& audience);
    ~ViewServer();
    ViewServer(const ViewServer&) = delete;
    ViewServer& operator=(const ViewServer&) = delete;

    /// @return the port
    std::uint16_t port() const { return port_; }

private:
    struct Glue;  ///< the functions that the library calls
    struct StopDaemon {
        void operator()(MHD_Daemon* daemon) const noexcept;
    };

    void serve();
    void takeNews();
    void resumeViewers();
    int answer(MHD_Connection* connection, const std::string& path, const std::string& method);
    int sendPicture(MHD_Connection* connection) const;
    int openStream(MHD_Connection* connection);

    Admission admission_;
    std::string page_;
    ViewMailbox& mailbox_;
    Audience& audience_;
    ViewNews news_;
    std::list<Viewer> viewers_;
    std::uint16_t port_ = 0;
    std::unique_ptr<MHD_Daemon, StopDaemon> daemon_;
    std::atomic<bool> isEnding_{false};
    std::thread thread_;
};

}  // namespace Veskar::Live
