#pragma once

#include <array>

/// The numbers under which the XML reader reports the elements of a library file and of copied photos. Attributes use
/// the same vocabulary but are looked up by name.
namespace LibraryTag {

enum Number : int {
    Unknown = 0,
    Attr,
    Caption,
    Hide,
    Crop,
    Root,
    Effect,
    Effects,
    File,
    Files,
    Ref,
    Refs,
    Filters,
    Filter,
    Folder,
    Folders,
    Group,
    Id,
    Keyword,
    Key,
    Keys,
    Mark,
    Name,
    Path,
    Photo,
    Photos,
    Selection,
    Seq,
    Structure,
    Thumb,
    Type,
    Value,
    Version,
    Window,
};

/// The element names in the order of their numbers, the first being number 1.
inline constexpr std::array kNames = {
    "attr",    "caption", "hide",   "crop",      "Photo", "effect",    "effects", "file", "files", "ref",     "refs",
    "filters", "filter",  "folder", "folders",   "group", "id",        "keyword", "key",  "keys",  "mark",    "name",
    "path",    "photo",   "photos", "selection", "seq",   "structure", "thumb",   "type", "value", "version", "window",
};
static_assert(kNames.size() == Window);

}
