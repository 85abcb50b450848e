// SPDX-License-Identifier: Apache-2.0
#include "Record.h"

#include <string>

namespace Bindings {
namespace {

/// A value that compares and prints as Python's own: arrays become lists.
py::object plain(const py::object& value) {
    return py::hasattr(value, "tolist") ? value.attr("tolist")() : value;
}

std::string represent(const py::object& self) {
    std::string text = py::type::of(self).attr("__qualname__").cast<std::string>() + "(";
    const char* separator = "";
    for (const py::handle name : self.attr("_fields")) {
        text += separator + name.cast<std::string>() + "=" +
                py::repr(plain(self.attr(name))).cast<std::string>();
        separator = ", ";
    }
    return text + ")";
}

py::object isEqual(const py::object& self, const py::object& other) {
    if (!py::type::of(self).is(py::type::of(other))) {
        return py::reinterpret_borrow<py::object>(Py_NotImplemented);
    }
    for (const py::handle name : self.attr("_fields")) {
        if (!plain(self.attr(name)).equal(plain(other.attr(name)))) {
            return py::bool_(false);
        }
    }
    return py::bool_(true);
}

py::object asDictionary(const py::object& value) {
    if (!py::hasattr(value, "_fields")) {
        if (!py::isinstance<py::list>(value)) {
            return plain(value);
        }
        py::list items;
        for (const py::handle item : value) {
            items.append(asDictionary(py::reinterpret_borrow<py::object>(item)));
        }
        return items;
    }
    py::dict members;
    for (const py::handle name : value.attr("_fields")) {
        members[name] = asDictionary(value.attr(name));
    }
    return members;
}

py::tuple reduce(const py::object& self) {
    py::list values;
    for (const py::handle name : self.attr("_fields")) {
        values.append(self.attr(name));
    }
    return py::make_tuple(py::module_::import("veskar.records").attr("rebuild"),
                          py::make_tuple(py::type::of(self), py::tuple(values)));
}

void assignBelow(const py::object& self, const py::dict& values, const std::string& path,
                 const std::map<std::string, std::string>& aliases) {
    for (const auto& [key, value] : values) {
        const auto written = py::str(key).cast<std::string>();
        const auto alias = aliases.find(written);
        const py::str name(alias == aliases.end() ? written : alias->second);
        const py::object property = py::getattr(py::type::of(self), name, py::none());
        if (Py_TYPE(property.ptr()) != &PyProperty_Type) {
            throw py::value_error(path + written + ": the key is not known");
        }
        const py::object present = self.attr(name);
        if (py::hasattr(present, "_fields") && py::isinstance<py::dict>(value)) {
            assignBelow(present, py::reinterpret_borrow<py::dict>(value), path + written + ".", {});
            continue;
        }
        try {
            py::setattr(self, name, value);
        } catch (py::error_already_set& error) {
            if (!error.matches(PyExc_TypeError)) {
                throw;
            }
            throw py::value_error(path + written + ": " + py::repr(value).cast<std::string>() +
                                  " cannot be used here, unlike " +
                                  py::repr(present).cast<std::string>());
        }
    }
}

}  // namespace

void assignNested(const py::object& self, const py::dict& values,
                  const std::map<std::string, std::string>& aliases) {
    assignBelow(self, values, "", aliases);
}

void addFieldName(const py::object& type, const char* name) {
    const py::object names = type.attr("_fields");
    type.attr("_fields") = names + py::object(py::make_tuple(name));
}

void assignFields(const py::object& self, const py::kwargs& values) {
    const py::object fields = self.attr("_fields");
    for (const auto& [name, value] : values) {
        if (!fields.contains(name)) {
            throw py::type_error(py::type::of(self).attr("__qualname__").cast<std::string>() +
                                 " has no field '" + name.cast<std::string>() + "'");
        }
        py::setattr(self, name, value);
    }
}

void addRecordMethods(py::object type) {
    const auto add = [&](const char* name, py::cpp_function function) {
        type.attr(name) = std::move(function);
    };
    add("__repr__", py::cpp_function(represent, py::name("__repr__"), py::is_method(type)));
    add("__eq__", py::cpp_function(isEqual, py::name("__eq__"), py::is_method(type)));
    add("__reduce__", py::cpp_function(reduce, py::name("__reduce__"), py::is_method(type)));
    add("to_dict",
        py::cpp_function(asDictionary, py::name("to_dict"), py::is_method(type),
                         "The fields by name; nested records become dictionaries, arrays lists."));
    // Values that can be changed are not hashable.
    type.attr("__hash__") = py::none();
}

}  // namespace Bindings
