#pragma once

#include <rq/attrib/AttributeList.h>
#include <rq/attrib/BuilderStatus.h>
#include <rq/data/NumericTypes.h>

/// Makes attribute lists from declarations such as "point vector32 N" and plain values.
///
/// Shape      a declaration is "binding type name" or "binding type name[count]", with single blanks: the binding is vertex
///            or facevarying, point or varying, primitive or uniform, detail or constant; the type is a type name, which
///            may tell its storage ("normal16"), or a storage name; a count multiplies the tuple size.  Values are packed,
///            the components of an entry side by side
/// Failure    a fault adds an error to the status, answers false and leaves the lists as they were
/// Ownership  values are copied, arrays are shared; the status must outlive the builder
/// Threads    belongs to one thread
class RQ_API RQ_AttributeBuilder
{
public:
    explicit RQ_AttributeBuilder(RQ_BuilderStatus &status);

    /// Take a declaration apart.  `owner` is -1 for an unknown binding, which is no fault here.  A blank before the bracket
    /// ("v [2]") makes the count a fifth field, which is passed over.  The outputs may be partly written when it fails.
    static bool guessTypeInformation(RQ_BuilderStatus &status, const char *declaration, BAS_StringHolder &name,
                                     RQ_Owner &owner, RQ_Storage &storage, RQ_Type &type, int &tupleSize);

    /// Add an attribute of `count` values, a multiple of its tuple size, converted to its storage.
    ///
    /// All attributes of an owner have the same number of entries, a detail attribute has one.  A name is added once per
    /// motion segment, in order from 0.
    template <RQ_NumericValue T> bool add(const char *declaration, const T *values, int64_t count, int segment = 0)
    {
        return addNumbers(declaration, values, RQstorageOf<T>, count, segment);
    }
    bool add(const char *declaration, const BAS_StringHolder *values, int64_t count, int segment = 0);

    /// Add an array that already has the declared storage, tuple size and type.
    bool add(const char *declaration, const RQ_DataArrayHandle &array, int segment = 0);

    /// The list of what was added so far, null when an owner has nothing.
    RQ_AttributeListHandle build(RQ_Owner owner) const;

private:
    struct Declared
    {
        BAS_StringHolder name;
        RQ_Owner owner;
        RQ_Storage storage;
        RQ_Type type;
        int tupleSize;
    };
    struct Attribute
    {
        BAS_StringHolder name;
        BAS_Array<RQ_DataArrayHandle> segments;
    };

    bool parse(const char *declaration, Declared &declared);
    bool addNumbers(const char *declaration, const void *values, RQ_Storage storage, int64_t count, int segment);
    bool checkCount(const char *declaration, const Declared &declared, const void *values, int64_t count);
    bool addArray(const char *declaration, const Declared &declared, const RQ_DataArrayHandle &array, int segment);

    RQ_BuilderStatus &status_;
    BAS_Array<Attribute> attributes_[4];  // by owner
};
