#pragma once

#include <QString>
#include <QStringList>

/// What a search looks for and where. Words are parted by single blanks; case counts nowhere.
struct FindCriteria
{
    /// Where a search begins. The numbers are stored.
    enum class Start {
        Library,   ///< its first photo
        Folder,    ///< the first photo of the folder on show
        Selection, ///< the photo after the selected ones
    };

    /// Longer texts are not searched for while somebody waits.
    static constexpr int kLongestText = 1000;

    QString allWordsString;  ///< every one of these words must occur
    QString exactString;     ///< this very text must occur
    QString noneWordString;  ///< none of these words may occur
    QString oneWordString;   ///< at least one of these words must occur
    bool makeFolder = false; ///< all matches are put into a new folder
    bool searchCaptions = true;
    bool searchFileNames = true; ///< without their extensions
    bool searchKeywords = true;
    bool valid = false; ///< a search was defined, which can be repeated
    Start startOption = Start::Library;

    /// Only words that must not occur: these find nothing by themselves.
    [[nodiscard]] bool onlyExcludes() const
    {
        return allWordsString.isEmpty() && exactString.isEmpty() && oneWordString.isEmpty() &&
               !noneWordString.isEmpty();
    }
    /// Whether there is something to look for, and somewhere to look.
    [[nodiscard]] bool canSearch() const
    {
        const bool hasText = !allWordsString.isEmpty() || !exactString.isEmpty() || !noneWordString.isEmpty() ||
                             !oneWordString.isEmpty();
        return hasText && (searchCaptions || searchFileNames || searchKeywords);
    }
};
