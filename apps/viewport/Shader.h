#pragma once

#include <memory>
#include <span>
#include <string>
#include <unordered_map>

#include <epoxy/gl.h>

#include <host/bas/Vector.h>

namespace rq::viewport
{
/// A program of the graphics card, for the context that was current when it was made.
class Shader
{
public:
    /// Each text is put behind `defines` and what all have in common.  Null, with the driver's words, when it does not
    /// accept them.
    static std::unique_ptr<Shader> create(const char *vertex, const char *fragment, const std::string &defines,
                                          std::string &error);
    ~Shader();
    Shader(const Shader &) = delete;
    Shader &operator=(const Shader &) = delete;

    void use() const { glUseProgram(program_); }

    // Of the program in use; a name that the program does not need is ignored.
    void set(const char *name, int value) { glUniform1i(place(name), value); }
    void set(const char *name, float value) { glUniform1f(place(name), value); }
    void set(const char *name, int x, int y) { glUniform2i(place(name), x, y); }
    void set(const char *name, int x, int y, int z) { glUniform3i(place(name), x, y, z); }
    void set(const char *name, int x, int y, int z, int w) { glUniform4i(place(name), x, y, z, w); }
    void set(const char *name, float x, float y) { glUniform2f(place(name), x, y); }
    void set(const char *name, const BAS_Vec3f &value) { glUniform3fv(place(name), 1, &value.x); }
    void set(const char *name, std::span<const BAS_Vec3f> values)
    {
        glUniform3fv(place(name), GLsizei(values.size()), &values.front().x);
    }

    /// Row vectors here are column vectors there.
    void set(const char *name, const BAS_Mat4d &matrix);

private:
    explicit Shader(GLuint program) : program_(program) {}
    GLint place(const char *name);

    GLuint program_;
    std::unordered_map<std::string, GLint> places_;
};
}  // namespace rq::viewport
