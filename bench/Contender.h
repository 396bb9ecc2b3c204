#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "bench/BenchTree.h"

/// One library's tree of named values, doing what is measured.
///
/// Numbers of 32 bits stay such where the library has them. Blocks become the library's maps, and
/// children that share a name a list under that name, except in forms that repeat names.
class CContender {
public:
    virtual ~CContender() = default;

    virtual const char* Name() const = 0;

    /// Builds the tree that Save, Copy, Find and Equal work on, anew if there is one.
    virtual void Build(CBenchTree const& tree) = 0;

    /// Makes a second tree equal to it.
    virtual void BuildTwin() = 0;

    /// Saves the tree to memory anew and returns the image's length.
    virtual std::size_t Save() = 0;

    /// The bytes that Save made last.
    virtual std::string_view Image() const = 0;

    /// Loads an image and keeps the result until Drop.
    virtual void Load(std::string_view image) = 0;
    virtual void Drop() = 0;

    /// Copies the whole tree and destroys the copy.
    virtual void Copy() = 0;

    /// Compares the two trees; false when the library finds them different.
    virtual bool Equal() = 0;

    /// Finds a value of the topmost block by its name. False when it is not there.
    virtual bool Find(const char* name) = 0;

    /// Whether the result of Load equals the tree that was built.
    virtual bool LoadedIsEqual() = 0;
};

std::unique_ptr<CContender> MakeParameterBlockContender();
std::unique_ptr<CContender> MakeMsgpackContender();
std::unique_ptr<CContender> MakeRapidJsonContender();
std::unique_ptr<CContender> MakeNlohmannCborContender();
std::unique_ptr<CContender> MakeNlohmannMsgpackContender();
std::unique_ptr<CContender> MakeProtobufContender();
