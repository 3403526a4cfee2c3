#include "StoredFile.h"

bool isStoredFile(const BookmarkView &view, PresentFile &present, int folder, const char *name, InodeTrust trust)
{
    const FileIdentity stored = view.file();
    Sameness sameness = compareFiles(stored, present.identity, trust);
    if (sameness == Sameness::AskHandle) {
        present.identity.handle = readHandle(folder, name);
        sameness = compareHandles(stored, present.identity);
    }
    if (sameness != Sameness::AskContent)
        return sameness == Sameness::Same;
    const auto fingerprint = view.fingerprint();
    return fingerprint && stored.size == present.identity.size &&
           readFingerprintAt(folder, name, stored.size) == fingerprint;
}
