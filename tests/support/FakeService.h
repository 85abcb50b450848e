// SPDX-License-Identifier: Apache-2.0
// A simulated service on the system bus.
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

struct sd_bus;
struct sd_bus_message;
struct sd_event;

namespace VeskarTest {

/// Writes the body of a message.
using Body = std::function<void(sd_bus_message*)>;

/// @return a dictionary entry {sv}
Body number(const std::string& key, double value);
Body truth(const std::string& key, bool value);
Body text(const std::string& key, const std::string& value);
Body integer(const std::string& key, int value);
/// @return a dictionary entry {sv} whose value is an a{sv} of such entries
Body entries(const std::string& key, const std::vector<Body>& nested);
/// @return a dictionary entry {sv} whose value is a structure (ib)
Body status(const std::string& key, int value, bool present);
/// @return an a{sv}
Body dictionary(const std::vector<Body>& content);
/// @return the body of a PropertiesChanged signal
Body changed(const std::string& interface, const std::vector<Body>& content);
/// @return a string alone
Body string(const std::string& value);
/// @return a variant of doubles
Body doubles(const std::vector<double>& values);
/// @return an empty body
Body nothing();

/// Prints "what" and ends the test program when @p result is negative: a broken fake invalidates
/// the test.
int must(int result, const char* what);

/// Owns a name on the system bus and serves it on its own thread.
class FakeService {
public:
    /// A method or signal.
    struct Member {
        std::string path;
        std::string interface;
        std::string name;
        bool operator<(const Member& other) const {
            return std::tie(path, interface, name) <
                   std::tie(other.path, other.interface, other.name);
        }
    };

    /// Returns when the name is owned.
    explicit FakeService(const std::string& busName);
    /// Leaves the bus, and with it the name.
    ~FakeService();
    FakeService(const FakeService&) = delete;
    FakeService& operator=(const FakeService&) = delete;

    /// Sets the body that answers calls of a method.
    void answer(const Member& method, const Body& body);
    /// Sets the error that answers calls of a method.
    void refuse(const Member& method, const std::string& error, const std::string& message);
    /// Sets a function that is called with calls of a method, on the service's thread, before they
    /// are answered.
    void inspect(const Member& method, std::function<void(sd_bus_message*)> look);
    /// Holds back the answers to calls of a method.
    void hold(const Member& method);
    /// Makes the service leave the bus without an answer at the next call of a method.
    void leaveAt(const Member& method);
    /// Answers all held calls.
    void release(const Body& body);
    /// @return number of calls of a method
    int calls(const Member& method);
    /// Sends a signal; returns when it has left for the bus.
    void emit(const Member& signal, const Body& body);

private:
    using Handler = std::function<void(sd_bus_message*)>;

    void serve();
    void run(std::function<void()> task);
    void handle(const Member& method, Handler handler);
    int onCall(sd_bus_message* call);

    std::string busName_;
    sd_bus* bus_ = nullptr;
    sd_event* event_ = nullptr;
    std::map<Member, Handler> handlers_;
    std::map<Member, int> counts_;
    std::vector<sd_bus_message*> held_;

    int wakeUp_;
    std::mutex mutex_;
    std::vector<std::function<void()>> tasks_;
    std::thread thread_;
};

}  // namespace VeskarTest
