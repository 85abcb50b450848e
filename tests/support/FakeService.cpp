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
    : busName_(name), wakeUp_(must(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "eventfd")) {
    thread_ = std::thread([this] { serve(); });
    run([] {});
}

FakeService::~FakeService() {
    run([this] { must(sd_event_exit(event_, 0), "exit"); });
    thread_.join();
    close(wakeUp_);
}

void FakeService::serve() {
    must(sd_bus_open_system(&bus_), "open system bus");
    must(sd_event_new(&event_), "new event");
    must(sd_bus_attach_event(bus_, event_, 0), "attach");
    must(sd_bus_add_filter(
             bus_, nullptr,
             [](sd_bus_message* m, void* data, sd_bus_error*) {
                 return static_cast<FakeService*>(data)->onCall(m);
             },
             this),
         "add filter");
    must(sd_bus_request_name(bus_, busName_.c_str(), 0), "request name");
    must(sd_event_add_io(
             event_, nullptr, wakeUp_, EPOLLIN,
             [](sd_event_source*, int descriptor, std::uint32_t, void* data) {
                 std::uint64_t count = 0;
                 must(static_cast<int>(read(descriptor, &count, sizeof(count))), "read");
                 auto* service = static_cast<FakeService*>(data);
                 std::vector<std::function<void()>> due;
                 {
                     const std::lock_guard<std::mutex> lock(service->mutex_);
                     due.swap(service->tasks_);
                 }
                 for (const std::function<void()>& task : due) {
                     task();
                 }
                 return 0;
             },
             this),
         "add io");
    must(sd_event_loop(event_), "loop");
    for (sd_bus_message* call : held_) {
        sd_bus_message_unref(call);
    }
    sd_bus_flush_close_unref(bus_);
    sd_event_unref(event_);
}

void FakeService::run(std::function<void()> task) {
    // Shared with the task, which may still be returning from set_value.
    const auto done = std::make_shared<std::promise<void>>();
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        tasks_.emplace_back([done, work = std::move(task)] {
            work();
            done->set_value();
        });
    }
    const std::uint64_t one = 1;
    must(static_cast<int>(write(wakeUp_, &one, sizeof(one))), "write");
    done->get_future().wait();
}

int FakeService::onCall(sd_bus_message* call) {
    if (sd_bus_message_is_method_call(call, nullptr, nullptr) <= 0) {
        return 0;
    }
    const Member member{sd_bus_message_get_path(call), sd_bus_message_get_interface(call),
                        sd_bus_message_get_member(call)};
    const auto handler = handlers_.find(member);
    if (handler == handlers_.end()) {
        return 0;
    }
    ++counts_[member];
    handler->second(call);
    return 1;
}

void FakeService::handle(const Member& method, Handler handler) {
    run([&] { handlers_[method] = std::move(handler); });
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
        handlers_[method] = [look = std::move(look),
                             answer = handlers_[method]](sd_bus_message* m) {
            look(m);
            answer(m);
        };
    });
}

void FakeService::hold(const Member& method) {
    handle(method, [this](sd_bus_message* call) { held_.push_back(sd_bus_message_ref(call)); });
}

void FakeService::leaveAt(const Member& method) {
    handle(method, [this](sd_bus_message*) { sd_bus_close(bus_); });
}

void FakeService::release(const Body& body) {
    run([&] {
        for (sd_bus_message* call : held_) {
            reply(call, body);
            sd_bus_message_unref(call);
        }
        held_.clear();
        must(sd_bus_flush(bus_), "flush");
    });
}

int FakeService::calls(const Member& method) {
    int count = 0;
    run([&] { count = counts_[method]; });
    return count;
}

void FakeService::emit(const Member& signal, const Body& body) {
    run([&] {
        sd_bus_message* message = nullptr;
        must(sd_bus_message_new_signal(bus_, &message, signal.path.c_str(),
                                       signal.interface.c_str(), signal.name.c_str()),
             "new signal");
        body(message);
        must(sd_bus_send(bus_, message, nullptr), "send");
        must(sd_bus_flush(bus_), "flush");
        sd_bus_message_unref(message);
    });
}

}  // namespace VeskarTest
