#pragma once

#include <string>
#include <vector>

#include <host/bas/JSONWriter.h>
#include <io/detail/Materials.h>

namespace rq::io
{
/// The materials of a glTF file, equal ones once.
class GLTFMaterialList
{
public:
    /// The number of a material, whose name may be empty.
    int add(const std::string &name, const Material &material);

    /// Write the member "materials"; nothing without any.
    void write(BAS_JSONWriter &json) const;

private:
    struct Named
    {
        std::string name;
        Material material;

        bool operator==(const Named &) const = default;
    };
    std::vector<Named> all_;
};
}  // namespace rq::io
