#pragma once

#include "util/KxByteArrayOutputStream.h"
#include "util/KxObject.h"

#include <string>

/** Returns what the object's serialize writes. */
template <class T>
std::string serialized(const T& object) {
    KxByteArrayOutputStream out;
    object.serialize(out);
    return std::string(out.view());
}

/** Returns the name of the class of the object, for example "KxSipViaHeader". It lives as long as the process. For one
    thread. */
const std::string& classNameOf(const KxObject& object);
