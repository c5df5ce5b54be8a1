#include <apps/viewport/Shader.h>

#include <vector>

#include <apps/viewport/shaderTexts.h>

namespace rq::viewport
{
namespace
{
std::string logOf(GLuint object, decltype(glGetShaderiv) &getNumber, decltype(glGetShaderInfoLog) &getLog)
{
    GLint length = 0;
    getNumber(object, GL_INFO_LOG_LENGTH, &length);
    std::vector<char> log(size_t(length) + 1);
    getLog(object, length, nullptr, log.data());
    return log.data();
}

bool compile(GLuint program, GLenum stage, const char *text, const std::string &defines, std::string &error)
{
    const GLuint shader = glCreateShader(stage);
    const std::string head = "#version 450 core\n" + defines;
    const char *texts[] = {head.c_str(), shader::kCommon, text};
    glShaderSource(shader, 3, texts, nullptr);
    glCompileShader(shader);
    GLint done = GL_FALSE;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &done);
    if (done)
        glAttachShader(program, shader);
    else
        error = logOf(shader, glGetShaderiv, glGetShaderInfoLog);
    glDeleteShader(shader);
    return done;
}
}  // namespace

std::unique_ptr<Shader> Shader::create(const char *vertex, const char *fragment, const std::string &defines,
                                       std::string &error)
{
    std::unique_ptr<Shader> shader(new Shader(glCreateProgram()));
    if (!compile(shader->program_, GL_VERTEX_SHADER, vertex, defines, error) ||
        !compile(shader->program_, GL_FRAGMENT_SHADER, fragment, defines, error))
        return nullptr;
    glLinkProgram(shader->program_);
    GLint done = GL_FALSE;
    glGetProgramiv(shader->program_, GL_LINK_STATUS, &done);
    if (done)
        return shader;
    error = logOf(shader->program_, glGetProgramiv, glGetProgramInfoLog);
    return nullptr;
}

Shader::~Shader() { glDeleteProgram(program_); }

void Shader::set(const char *name, const BAS_Mat4d &matrix)
{
    const BAS_Mat4f single(matrix);
    glUniformMatrix4fv(place(name), 1, GL_FALSE, single.getValue());
}

GLint Shader::place(const char *name)
{
    const auto [found, added] = places_.try_emplace(name, -1);
    if (added)
        found->second = glGetUniformLocation(program_, name);
    return found->second;
}
}  // namespace rq::viewport
