// SPDX-License-Identifier: Apache-2.0
// Binds plain structs: what Python expects of a value comes from the list of its fields.
#pragma once

#include "Bindings.h"

#include <map>
#include <memory>
#include <string>
#include <type_traits>

namespace Bindings {

/// Adds repr, equality, conversion to a dictionary, and what copy and pickle use.
/// @param type a class with the attribute "_fields"
void addRecordMethods(py::object type);

/// @param type a class with the attribute "_fields", which receives the name
void addFieldName(const py::object& type, const char* name);

/// @param self a record
/// @param values by the names of fields
/// @throw py::type_error for another name
void assignFields(const py::object& self, const py::kwargs& values);

/// Assigns fields of a record, and of the records in it.
/// @param self a record
/// @param values by the names of fields; dictionaries for records
/// @param aliases other names of the fields of @p self
/// @throw py::value_error for another name, with dots
void assignNested(const py::object& self, const py::dict& values,
                  const std::map<std::string, std::string>& aliases = {});

/// A struct whose fields are attributes and keywords of its constructor.
///
/// Nested records and matrices are views of the struct, which they keep alive; lists, dictionaries
/// and optional parts are copies, which take effect when they are assigned.
template <typename T, typename... Bases>
class Record {
public:
    Record(py::handle scope, const char* name, const char* text) : type_(scope, name, text) {
        type_.attr("_fields") = py::tuple();
        addRecordMethods(type_);
        type_.def(py::init([](const py::kwargs& values) {
            auto made = std::make_unique<T>();
            assignFields(py::cast(made.get(), py::return_value_policy::reference), values);
            return made;
        }));
    }

    /// Called first: fields of a base come before those of the class.
    Record& inherit(const py::object& base) {
        type_.attr("_fields") = base.attr("_fields");
        return *this;
    }

    template <typename Owner, typename Value>
    Record& field(const char* name, Value Owner::*member, const char* text) {
        static_assert(std::is_base_of_v<Owner, T>);
        const auto set = [member](T& self, const Value& value) { self.*member = value; };
        constexpr bool isRegistered =
            std::is_base_of_v<py::detail::type_caster_generic, py::detail::make_caster<Value>>;
        constexpr bool isEnumeration = std::is_enum_v<Value>;
        if constexpr ((isRegistered && !isEnumeration) ||
                      std::is_base_of_v<Eigen::EigenBase<Value>, Value>) {
            type_.def_property(
                name, [member](T& self) -> Value& { return self.*member; }, set,
                py::return_value_policy::reference_internal, text);
        } else {
            type_.def_property(
                name, [member](const T& self) -> Value { return self.*member; }, set, text);
        }
        addFieldName(type_, name);
        return *this;
    }

    /// @return the class, for methods
    py::class_<T, Bases...>& type() { return type_; }

private:
    py::class_<T, Bases...> type_;
};

}  // namespace Bindings
