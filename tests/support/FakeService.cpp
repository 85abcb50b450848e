// SPDX-License-Identifier: Apache-2.0
#include "support/FakeService.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <memory>
#include <utility>

#include <sys/eventfd.h>
#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>
#include <unistd.h>

namespace VeskarTest {

int must(int result, const char* what) {
    if (result < 0) {
        std::fprintf(stderr, "%s failed with %d\n", what, result);
        std::abort();
    }
    return result;
}

Body number(const std::string& key, double value) {
    return [=](sd_bus_message* m) {
        must(sd_bus_message_append(m, "{sv}", key.c_str(), "d", value), "append");
    };
}

Body truth(const std::string& key, bool value) {
    return [=](sd_bus_message* m) {
        must(sd_bus_message_append(m, "{sv}", key.c_str(), "b", value ? 1 : 0), "append");
    };
}

Body text(const std::string& key, const std::string& value) {
    return [=](sd_bus_message* m) {
        must(sd_bus_message_append(m, "{sv}", key.c_str(), "s", value.c_str()), "append");
    };
}

Body integer(const std::string& key, int value) {
    return [=](sd_bus_message* m) {
        must(sd_bus_message_append(m, "{sv}", key.c_str(), "i", value), "append");
    };
}

Body entries(const std::string& key, const std::vector<Body>& nested) {
    return [=](sd_bus_message* m) {
        must(sd_bus_message_open_container(m, 'e', "sv"), "open entry");
        must(sd_bus_message_append(m, "s", key.c_str()), "append");
        must(sd_bus_message_open_container(m, 'v', "a{sv}"), "open variant");
        dictionary(nested)(m);
        must(sd_bus_message_close_container(m), "close variant");
        must(sd_bus_message_close_container(m), "close entry");
    };
}

Body status(const std::string& key, int value, bool present) {
    return [=](sd_bus_message* m) {
        must(sd_bus_message_append(m, "{sv}", key.c_str(), "(ib)", value, present ? 1 : 0),
             "append");
    };
}

Body dictionary(const std::vector<Body>& content) {
    return [=](sd_bus_message* m) {
        must(sd_bus_message_open_container(m, 'a', "{sv}"), "open array");
        for (const Body& entry : content) {
            entry(m);
        }
        must(sd_bus_message_close_container(m), "close array");
    };
}

Body changed(const std::string& interface, const std::vector<Body>& content) {
    return [=](sd_bus_message* m) {
        must(sd_bus_message_append(m, "s", interface.c_str()), "append");
        dictionary(content)(m);
        must(sd_bus_message_append(m, "as", 0), "append");
    };
}

Body string(const std::string& value) {
    return [=](sd_bus_message* m) { must(sd_bus_message_append(m, "s", value.c_str()), "append"); };
}

Body doubles(const std::vector<double>& values) {
    return [=](sd_bus_message* m) {
        must(sd_bus_message_open_container(m, 'v', "ad"), "open variant");
        must(sd_bus_message_append_array(m, 'd', values.data(), values.size() * sizeof(double)),
             "append array");
        must(sd_bus_message_close_container(m), "close variant");
    };
}

Body nothing() {
    return [](sd_bus_message*) {};
}

namespace {

void reply(sd_bus_message* call, const Body& body) {
    sd_bus_message* answer = nullptr;
    must(sd_bus_message_new_method_return(call, &answer), "new return");
    body(answer);
    must(sd_bus_send(nullptr, answer, nullptr), "send");
    sd_bus_message_unref(answer);
}

}  // namespace

FakeService::FakeService(const std::string& name)
    : busName(name), wakeUp(must(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "eventfd")) {
    thread = std::thread([this] { serve(); });
    run([] {});
}

FakeService::~FakeService() {
    run([this] { must(sd_event_exit(event, 0), "exit"); });
    thread.join();
    close(wakeUp);
}

void FakeService::serve() {
    must(sd_bus_open_system(&bus), "open system bus");
    must(sd_event_new(&event), "new event");
    must(sd_bus_attach_event(bus, event, 0), "attach");
    must(sd_bus_add_filter(
             bus, nullptr,
             [](sd_bus_message* m, void* data, sd_bus_error*) {
                 return static_cast<FakeService*>(data)->onCall(m);
             },
             this),
         "add filter");
    must(sd_bus_request_name(bus, busName.c_str(), 0), "request name");
    must(sd_event_add_io(
             event, nullptr, wakeUp, EPOLLIN,
             [](sd_event_source*, int descriptor, std::uint32_t, void* data) {
                 std::uint64_t count = 0;
                 must(static_cast<int>(read(descriptor, &count, sizeof(count))), "read");
                 auto* service = static_cast<FakeService*>(data);
                 std::vector<std::function<void()>> due;
                 {
                     const std::lock_guard<std::mutex> lock(service->mutex);
                     due.swap(service->tasks);
                 }
                 for (const std::function<void()>& task : due) {
                     task();
                 }
                 return 0;
             },
             this),
         "add io");
    must(sd_event_loop(event), "loop");
    for (sd_bus_message* call : held) {
        sd_bus_message_unref(call);
    }
    sd_bus_flush_close_unref(bus);
    sd_event_unref(event);
}

void FakeService::run(std::function<void()> task) {
    // Shared with the task, which may still be on its way out of set_value.
    const auto done = std::make_shared<std::promise<void>>();
    {
        const std::lock_guard<std::mutex> lock(mutex);
        tasks.emplace_back([done, work = std::move(task)] {
            work();
            done->set_value();
        });
    }
    const std::uint64_t one = 1;
    must(static_cast<int>(write(wakeUp, &one, sizeof(one))), "write");
    done->get_future().wait();
}

int FakeService::onCall(sd_bus_message* call) {
    if (sd_bus_message_is_method_call(call, nullptr, nullptr) <= 0) {
        return 0;
    }
    const Member member{sd_bus_message_get_path(call), sd_bus_message_get_interface(call),
                        sd_bus_message_get_member(call)};
    const auto handler = handlers.find(member);
    if (handler == handlers.end()) {
        return 0;
    }
    ++counts[member];
    handler->second(call);
    return 1;
}

void FakeService::handle(const Member& method, Handler handler) {
    run([&] { handlers[method] = std::move(handler); });
}

void FakeService::answer(const Member& method, const Body& body) {
    handle(method, [=](sd_bus_message* call) { reply(call, body); });
}

void FakeService::refuse(const Member& method, const std::string& error,
                         const std::string& message) {
    handle(method, [=](sd_bus_message* call) {
        must(sd_bus_reply_method_errorf(call, error.c_str(), "%s", message.c_str()), "reply");
    });
}

void FakeService::inspect(const Member& method, std::function<void(sd_bus_message*)> look) {
    run([&] {
        handlers[method] = [look = std::move(look), answer = handlers[method]](sd_bus_message* m) {
            look(m);
            answer(m);
        };
    });
}

void FakeService::hold(const Member& method) {
    handle(method, [this](sd_bus_message* call) { held.push_back(sd_bus_message_ref(call)); });
}

void FakeService::leaveAt(const Member& method) {
    handle(method, [this](sd_bus_message*) { sd_bus_close(bus); });
}

void FakeService::release(const Body& body) {
    run([&] {
        for (sd_bus_message* call : held) {
            reply(call, body);
            sd_bus_message_unref(call);
        }
        held.clear();
        must(sd_bus_flush(bus), "flush");
    });
}

int FakeService::calls(const Member& method) {
    int count = 0;
    run([&] { count = counts[method]; });
    return count;
}

void FakeService::emit(const Member& signal, const Body& body) {
    run([&] {
        sd_bus_message* message = nullptr;
        must(sd_bus_message_new_signal(bus, &message, signal.path.c_str(), signal.interface.c_str(),
                                       signal.name.c_str()),
             "new signal");
        body(message);
        must(sd_bus_send(bus, message, nullptr), "send");
        must(sd_bus_flush(bus), "flush");
        sd_bus_message_unref(message);
    });
}

}  // namespace VeskarTest
