/// A Qt window whose GL context Qt made, with a program and a text of this library in it. It stays
/// until it is closed; with a file to write, for a single frame.
///
///     qt_window [PICTURE.png]
#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/kygl.h>
#include <kygl/KyGLText.h>
#include <kygl/KyShader.h>
#include <kygl/KyShaderBuild.h>
#include <kygl/KyShaderProgram.h>

#include <QGuiApplication>
#include <QImage>
#include <QOpenGLWindow>

#include <cstdio>
#include <utility>

#include <GL/glx.h>

namespace {

constexpr unsigned int kContext = 1;

void watch(const KyShaderBuild& build, void* /*user*/) {
    for (long i = 0; build.result.failed() && i < build.messageCount; ++i)
        std::fprintf(stderr, "qt_window: %s\n", build.messages[i].line);
}

class View : public QOpenGLWindow {
public:
    // @param file empty, or where the first frame goes
    explicit View(QString file) : mFile(std::move(file)) {}

    // The context dies with the window. This is the last chance to delete what was built in it.
    ~View() override {
        if (!isValid()) return;
        makeCurrent();
        mProgram.deleteProgram();
        KyGLText::cleanUp();
        KyDeferredDeleteMap::deferredDelete(kContext);
        doneCurrent();
    }

    const char* error() const { return mError; }

protected:
    // Qt calls these three with its context current.
    void initializeGL() override {
        // Without GLX Qt takes EGL and says nothing, and there would be no text.
        if (glXGetCurrentContext() == nullptr) return stop("no OpenGL by GLX");
        kyglSetContext(kContext);
        if (!kyglGLSLAvailable(kContext)) return stop("this OpenGL has no GLSL");
        mProgram.create("waves.vert", "waves.frag", "examples");
        mProgram.pushMacro("RINGS");
        KyGLText::setFont(18, true, false, "helvetica");
        KyGLText::setAlignment(0, 0);
        KyGLText::setBackground(0, 0, 0, 1);
    }

    void resizeGL(int width, int height) override {
        const qreal scale = devicePixelRatio();
        glViewport(0, 0, static_cast<int>(width * scale), static_cast<int>(height * scale));
    }

    // With more windows, each names its context here: they take turns on this thread.
    void paintGL() override {
        if (*mError != '\0') return;
        kyglSetContext(kContext);
        if (!mProgram.compile(kContext)) return stop("the shaders do not build");
        mProgram.apply(kContext);
        glRectf(-1, -1, 1, 1);
        mProgram.unUse();
        KyGLText::render(0, 0, 0, "Frozen Head\n1,008 m");
        // Here, because the buffers are undefined once Qt has swapped them.
        if (!mFile.isEmpty()) stop(grabFramebuffer().save(mFile) ? "" : "the file is not written");
    }

private:
    // Closes the window, behind the frame. Nothing may throw through Qt, so errors are told later.
    void stop(const char* error) {
        mError = error;
        QMetaObject::invokeMethod(this, "close", Qt::QueuedConnection);
    }

    KyShaderProgram mProgram;
    QString mFile;
    const char* mError = "";
};

const char* show(const QString& file) {
    View view(file);
    view.resize(256, 256);
    view.show();
    QGuiApplication::exec();
    return view.error();
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "xcb");            // an X11 window, on a Wayland desktop too
    qputenv("QT_XCB_GL_INTEGRATION", "xcb_glx");  // text asks GLX for the fonts' display
    QSurfaceFormat format;
    format.setRenderableType(QSurfaceFormat::OpenGL);
    format.setVersion(2, 1);  // fixed functions and display lists, which text needs
    QSurfaceFormat::setDefaultFormat(format);
    const QGuiApplication application(argc, argv);
    KyShader::mFolderPath = EXAMPLES_ROOT;
    KyShaderBuild::setObserver(watch);
    const char* const error = show(argc > 1 ? QString::fromLocal8Bit(argv[1]) : QString());
    kyglClearAllContexts();
    std::printf("%ld GL objects left\n", KyDeferredDeleteMap::pending().total());
    if (*error == '\0') return 0;
    std::fprintf(stderr, "qt_window: %s\n", error);
    return 1;
}
