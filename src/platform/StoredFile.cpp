#include "StoredFile.h"

bool isStoredFile(const BookmarkData &stored, PresentFile &present, int folder, const char *name, InodeTrust trust)
{
    Sameness sameness = compareFiles(stored.file, present.identity, trust);
    if (sameness == Sameness::AskHandle) {
        present.identity.handle = readHandle(folder, name);
        sameness = compareHandles(stored.file, present.identity);
    }
    if (sameness != Sameness::AskContent)
        return sameness == Sameness::Same;
    return stored.fingerprint && stored.file.size == present.identity.size &&
           readFingerprintAt(folder, name, stored.file.size) == stored.fingerprint;
}
