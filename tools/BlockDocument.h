#pragma once

#include <string>

#include "utils/ParameterBlock.h"

/// A parameter block together with the form in which its file holds it.
struct CBlockDocument {
    bool fBare = false;  ///< A bare image: no header, names inline.
    std::string strId;   ///< The format identifier of a session image.
    CParameterBlock block;
};

/// What the user says about a file's form; by default a session image of any identifier.
struct CBlockForm {
    bool fBare = false;
    bool fIdGiven = false;
    std::string strId;
};

/// The identifier that a session image begins with: its bytes up to the first zero byte, or those
/// given. Ends the command when there is no zero byte.
std::string IdentifierOf(CBlockForm const& form, std::string const& image, std::string const& path);

/// Fills `document` from an image. Returns an empty text, or what is wrong with the image; then the
/// document holds what could be read.
std::string LoadImage(CBlockForm const& form, std::string const& image, std::string const& path,
                      CBlockDocument& document);

/// The image of a document. Ends the command when the document has none.
std::string MakeImage(CBlockDocument& document);
