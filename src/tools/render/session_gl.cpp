#include "session_gl.h"

#include "shell/capability_report.h"
#include "shell/driver_gl.h"
#include "texgen/cosine_table.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GL/glew.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

constexpr EGLint color_bits = 8;
constexpr EGLint depth_bits = 24;
constexpr uint32_t max_devices = 16;

// ---- a context without a display ------------------------------------------------------

static bool has_word(const char* list, const char* word)
{
    const size_t length = std::strlen(word);
    for (const char* at = list; at != nullptr && (at = std::strstr(at, word)) != nullptr; at += length)
        if ((at == list || at[-1] == ' ') && (at[length] == ' ' || at[length] == '\0'))
            return true;
    return false;
}

// The displays of graphics cards. The software rasteriser has a device of its own, which
// the surfaceless display stands for.
static void add_card_displays(std::vector<EGLDisplay>& displays)
{
    const auto query_devices = reinterpret_cast<PFNEGLQUERYDEVICESEXTPROC>(eglGetProcAddress("eglQueryDevicesEXT"));
    const auto query_string
        = reinterpret_cast<PFNEGLQUERYDEVICESTRINGEXTPROC>(eglGetProcAddress("eglQueryDeviceStringEXT"));
    EGLDeviceEXT devices[max_devices];
    EGLint count = 0;
    if (query_devices == nullptr || query_string == nullptr || query_devices(max_devices, devices, &count) != EGL_TRUE)
        return;
    for (EGLint i = 0; i < count; ++i)
        if (!has_word(query_string(devices[i], EGL_EXTENSIONS), "EGL_MESA_device_software"))
            displays.push_back(eglGetPlatformDisplay(EGL_PLATFORM_DEVICE_EXT, devices[i], nullptr));
}

// Cards first, unless the environment asks for the software rasteriser.
static std::vector<EGLDisplay> candidate_displays()
{
    std::vector<EGLDisplay> displays;
    const char* software = std::getenv("LIBGL_ALWAYS_SOFTWARE");
    const bool cards = software == nullptr || std::strcmp(software, "0") == 0 || std::strcmp(software, "") == 0;
    if (cards)
        add_card_displays(displays);
    displays.push_back(eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr));
    displays.push_back(eglGetDisplay(EGL_DEFAULT_DISPLAY));
    return displays;
}

static EGLint config_value(EGLDisplay display, EGLConfig config, EGLint attribute)
{
    EGLint value = 0;
    eglGetConfigAttrib(display, config, attribute, &value);
    return value;
}

// Exactly the colours and the depth of the player's window, no alpha; the fewest samples
// that are enough.
static EGLConfig choose_config(EGLDisplay display, EGLint samples)
{
    const EGLint wanted[] = {EGL_SURFACE_TYPE, EGL_PBUFFER_BIT, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_RED_SIZE,
        color_bits, EGL_GREEN_SIZE, color_bits, EGL_BLUE_SIZE, color_bits, EGL_DEPTH_SIZE, depth_bits,
        EGL_SAMPLE_BUFFERS, samples > 0 ? 1 : 0, EGL_SAMPLES, samples, EGL_NONE};
    EGLint count = 0;
    if (eglChooseConfig(display, wanted, nullptr, 0, &count) != EGL_TRUE || count == 0)
        return nullptr;
    std::vector<EGLConfig> configs(static_cast<size_t>(count));
    eglChooseConfig(display, wanted, configs.data(), count, &count);

    EGLConfig best = nullptr;
    EGLint least = 0;
    for (EGLint i = 0; i < count; ++i) {
        EGLConfig config = configs[static_cast<size_t>(i)];
        const EGLint excess = (config_value(display, config, EGL_BUFFER_SIZE) - 3 * color_bits) * 100
            + config_value(display, config, EGL_SAMPLES) * 1000 + config_value(display, config, EGL_STENCIL_SIZE)
            + config_value(display, config, EGL_DEPTH_SIZE) - depth_bits;
        if (config_value(display, config, EGL_RED_SIZE) == color_bits && (best == nullptr || excess < least)) {
            best = config;
            least = excess;
        }
    }
    return best;
}

static std::string too_many_samples(EGLDisplay display, uint32_t wanted)
{
    uint32_t most = wanted - 1;
    while (most > 0 && choose_config(display, static_cast<EGLint>(most)) == nullptr)
        --most;
    const std::string has = most == 0 ? "no antialiasing" : "at most " + std::to_string(most) + " samples a pixel";
    return "the driver has " + has + ", not the " + std::to_string(wanted) + " of --samples";
}

static bool make_surface(gl_session& session, EGLDisplay display, EGLConfig config)
{
    const EGLint size[]
        = {EGL_WIDTH, static_cast<EGLint>(session.width), EGL_HEIGHT, static_cast<EGLint>(session.height), EGL_NONE};
    session.surface = eglCreatePbufferSurface(display, config, size);
    return session.surface != EGL_NO_SURFACE
        && eglMakeCurrent(display, session.surface, session.surface, session.context) == EGL_TRUE;
}

// A surface of one pixel first: only a current context tells how large a surface may be.
static uint32_t largest_side(gl_session& session, EGLDisplay display, EGLConfig config)
{
    session.width = session.height = 1;
    if (!make_surface(session, display, config))
        return 0;
    GLint viewport[2] = {0, 0};
    glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);
    eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroySurface(display, session.surface);
    const EGLint limit = std::min({viewport[0], viewport[1], config_value(display, config, EGL_MAX_PBUFFER_WIDTH),
        config_value(display, config, EGL_MAX_PBUFFER_HEIGHT)});
    return static_cast<uint32_t>(std::max(limit, 0));
}

static bool open_on(gl_session& session, EGLDisplay display, const render_options& options, std::string& problem)
{
    if (display == EGL_NO_DISPLAY || eglInitialize(display, nullptr, nullptr) != EGL_TRUE
        || eglBindAPI(EGL_OPENGL_API) != EGL_TRUE)
        return false;
    const EGLConfig config = choose_config(display, static_cast<EGLint>(options.samples));
    if (config == nullptr && choose_config(display, 0) != nullptr)
        problem = too_many_samples(display, options.samples);
    session.context = config == nullptr ? nullptr : eglCreateContext(display, config, EGL_NO_CONTEXT, nullptr);
    if (session.context == nullptr) {
        eglTerminate(display);
        return false;
    }
    session.display = display;
    const uint32_t limit = largest_side(session, display, config);
    const uint32_t side = options.tile == 0 ? limit : std::min(limit, options.tile);
    session.width = std::min(options.width, side);
    session.height = std::min(options.height, side);
    if (limit > 0 && make_surface(session, display, config))
        return true;
    problem = "the driver has no surface of " + std::to_string(session.width) + " x " + std::to_string(session.height);
    eglTerminate(display);
    return false;
}

static bool open_without_display(gl_session& session, const render_options& options, std::string& problem)
{
    for (const EGLDisplay display : candidate_displays())
        if (open_on(session, display, options, problem))
            return true;
    return false;
}

// ---- a window ---------------------------------------------------------------------------

static bool open_window(gl_session& session, const render_options& options, std::string& problem)
{
    setenv("SDL_AUDIODRIVER", "dummy", 1); // the window needs no sound device
    setenv("SDL_VIDEODRIVER", "x11", 0);   // never a picture of letters in a terminal
    if (!window_start()) {
        problem = std::string("there is no display: ") + window_problem();
        return false;
    }
    window_ask_for_samples(options.samples);
    session.width = options.width;
    session.height = options.height;
    if (!window_open_opengl(session.window, {options.width, options.height}, false)) {
        problem = std::string("no window can be opened: ") + window_problem();
        window_shut_down(session.window);
        return false;
    }
    window_name("brimlow-render", nullptr);
    return true;
}

void session_end_frame(gl_session& session)
{
    if (session.window.surface == nullptr)
        return;
    window_swap(session.window);
    for (window_event event = window_next_event(); event != window_event_none; event = window_next_event())
        session.stop_asked |= event == window_event_closed || event == window_event_escape;
}

// ---- reading ------------------------------------------------------------------------------

static void make_resolved_framebuffer(gl_session& session)
{
    GLuint colors = 0;
    glGenFramebuffers(1, &session.resolved);
    glGenRenderbuffers(1, &colors);
    glBindRenderbuffer(GL_RENDERBUFFER, colors);
    glRenderbufferStorage(
        GL_RENDERBUFFER, GL_RGB8, static_cast<GLsizei>(session.width), static_cast<GLsizei>(session.height));
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, session.resolved);
    glFramebufferRenderbuffer(GL_DRAW_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, colors);
}

void session_begin_reading(gl_session& session)
{
    if (session.samples == 0 || glBlitFramebuffer == nullptr)
        return;
    if (session.resolved == 0)
        make_resolved_framebuffer(session);
    const GLint width = static_cast<GLint>(session.width);
    const GLint height = static_cast<GLint>(session.height);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, session.resolved);
    glBlitFramebuffer(0, 0, width, height, 0, 0, width, height, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, session.resolved);
}

void session_end_reading(const gl_session& session)
{
    if (session.resolved != 0)
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
}

// ---- the driver's offer -------------------------------------------------------------------

// What the player does for its window before it loads anything.
static void begin_drawing()
{
    build_cosine_table();
    clear_screen_gl();
    set_unchanging_state_gl();
}

static const char* driver_text(GLenum name)
{
    const GLubyte* text = glGetString(name);
    return text == nullptr ? "?" : reinterpret_cast<const char*>(text);
}

player_choices choices_for(const render_options& options)
{
    player_choices choices;
    choices.aspect_index = options.aspect;
    choices.fullscreen = -1;
    choices.antialiasing = options.samples > 0 ? 1 : -1;
    choices.music_enabled = -1; // the clock counts frames; music of a video is read from its file
    choices.use_glsl = options.glsl ? 1 : 0;
    return choices;
}

bool session_open(gl_session& session, const render_options& options, player_display& display, std::string& problem)
{
    session = {};
    problem = "this machine offers no OpenGL";
    if (options.window ? !open_window(session, options, problem) : !open_without_display(session, options, problem))
        return false;
    problem.clear();

    glewInit(); // without an X display it says so, after it has loaded every function
    if (!GLEW_VERSION_1_3) {
        problem = "OpenGL 1.3 is needed";
        return false;
    }
    const capability_report report = report_capabilities(offer_of_card(ask_driver_gl(), options.caps), choices_for(options));
    session.report = report.text;
    apply_report_gl(display, report);
    GLint samples = 0;
    glGetIntegerv(GL_SAMPLES, &samples);
    session.samples = static_cast<uint32_t>(std::max(samples, 0));
    session.driver = std::string(driver_text(GL_RENDERER)) + ", OpenGL " + driver_text(GL_VERSION);
    session.timer_queries = GLEW_ARB_timer_query && glGetQueryObjectui64v != nullptr;
    begin_drawing();
    return true;
}

void session_close(gl_session& session)
{
    if (session.window.surface != nullptr)
        window_shut_down(session.window);
    if (session.display != nullptr) {
        eglMakeCurrent(session.display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        eglTerminate(session.display);
    }
    session.display = session.surface = session.context = nullptr;
}
