// SPDX-License-Identifier: Apache-2.0
// Exceptions: faulty input is a ValueError with file, line and key; a file that cannot be opened,
// read or written is an OSError.
#include <veskar-host/InputError.h>

#include "Bindings.h"
#include "io/FileError.h"

#include <algorithm>
#include <exception>
#include <string>

namespace Bindings {
namespace {

using Veskar::Host::InputError;

/// "FILE:LINE", taken apart.
struct Place {
    py::object file = py::none();
    py::object line = py::none();

    explicit Place(const std::string& text) {
        const std::size_t colon = text.rfind(':');
        const bool hasLine = colon != std::string::npos && colon + 1 < text.size() &&
                             std::all_of(text.begin() + static_cast<std::ptrdiff_t>(colon) + 1,
                                         text.end(), [](char c) { return c >= '0' && c <= '9'; });
        if (hasLine) {
            line = py::int_(py::str(text.substr(colon + 1)));
        }
        if (!text.empty()) {
            file = py::str(hasLine ? text.substr(0, colon) : text);
        }
    }
};

void raiseInputError(const py::object& type, const InputError& error) {
    const Place place(error.place());
    const py::object raised = type(error.what());
    raised.attr("file") = place.file;
    raised.attr("line") = place.line;
    raised.attr("key") = error.key().empty() ? py::object(py::none()) : py::str(error.key());
    raised.attr("reason") = py::str(error.reason());
    PyErr_SetObject(type.ptr(), raised.ptr());
}

void raiseFileError(const Workbench::FileError& error) {
    // The constructor chooses the subclass for the number: FileNotFoundError, PermissionError ...
    const py::object raised = py::reinterpret_borrow<py::object>(PyExc_OSError)(
        error.number(), error.reason(), error.place());
    PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(raised.ptr())), raised.ptr());
}

py::object inputErrorType;  // NOLINT(cppcoreguidelines-avoid-non-const-global-variables)

void translate(std::exception_ptr thrown) {
    try {
        std::rethrow_exception(std::move(thrown));
    } catch (const Workbench::FileError& error) {
        raiseFileError(error);
    } catch (const InputError& error) {
        raiseInputError(inputErrorType, error);
    }
}

}  // namespace

void bindErrors(py::module_& module) {
    inputErrorType = py::reinterpret_steal<py::object>(PyErr_NewExceptionWithDoc(
        "veskar.InputError",
        "Faulty input: \"FILE:LINE: KEY: REASON\", without the parts that are unknown.\n\n"
        "Attributes\n----------\n"
        "file : str or None\n    where the fault was found\n"
        "line : int or None\n    its line, from 1\n"
        "key : str or None\n    with dots and indices, as \"tracks[3].box.top\"\n"
        "reason : str\n    what is wrong",
        PyExc_ValueError, nullptr));
    module.attr("InputError") = inputErrorType;
    // The interpreter ends before this library is unloaded.
    inputErrorType.inc_ref();
    py::register_exception_translator(translate);
}

}  // namespace Bindings
