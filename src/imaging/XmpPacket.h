#pragma once

#include <QByteArray>

#include <optional>
#include <string>

/// The packet as UTF-8, when a parser that builds a tree by recursion, unfolds entities and looks for each property
/// among all its siblings can be let at it: it has no document type, is not very deep, and its properties, those in
/// lists aside, are not very many. It need not be well-formed.
[[nodiscard]] std::optional<std::string> harmlessXmp(const QByteArray &packet);

/// A packet with nothing but the description and the subjects of the given one: programs leave much behind in packets
/// that a strict parser does not take. Empty when it has none. Nothing when it is not well-formed, or made to keep
/// whoever reads it busy.
[[nodiscard]] std::optional<std::string> wordsOfXmp(const QByteArray &packet);
