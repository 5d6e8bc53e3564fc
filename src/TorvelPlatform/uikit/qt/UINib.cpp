#include "TorvelPlatform/uikit/qt/UINib.h"

#include "TorvelPlatform/foundation/Diagnostics.h"
#include "TorvelPlatform/foundation/MainThread.h"
#include "TorvelPlatform/foundation/Text.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QUiLoader>
#include <QWidget>
#include <memory>

namespace torvel {
namespace {

ByText<UINib::ViewFactory>& factories() {
    static auto& views = *new ByText<UINib::ViewFactory>;
    return views;
}

class Loader final : public QUiLoader {
  public:
    QWidget* createWidget(const QString& className, QWidget* parent, const QString& name) override {
        const auto found = factories().find(className.toStdString());
        if (found == factories().end()) return QUiLoader::createWidget(className, parent, name);
        QWidget* const view = found->second();
        if (view == nullptr) return nullptr;
        view->setParent(parent);
        view->setObjectName(name);
        return view;
    }
};

// A loader opens every plug-in of the design tool that it finds, half a second of them. There are none in no
// folder.
std::unique_ptr<Loader> makeLoader() {
    const QStringList paths = QCoreApplication::libraryPaths();
    QCoreApplication::setLibraryPaths({});
    auto made = std::make_unique<Loader>();
    QCoreApplication::setLibraryPaths(paths);
    return made;
}

// A loader serves one file at a time: a view that loads a file of its own while one is loaded gets another.
class LoaderInUse {
  public:
    LoaderInUse() : m_loader(spare() ? std::move(spare()) : makeLoader()) {}
    ~LoaderInUse() { spare() = std::move(m_loader); }
    LoaderInUse(const LoaderInUse&) = delete;
    LoaderInUse& operator=(const LoaderInUse&) = delete;
    Loader* operator->() const { return m_loader.get(); }

  private:
    static std::unique_ptr<Loader>& spare() {
        static auto& loader = *new std::unique_ptr<Loader>;
        return loader;
    }
    std::unique_ptr<Loader> m_loader;
};

}  // namespace

std::unique_ptr<UIView> UINib::instantiate() const {
    expectMainThread("UINib");
    const auto path = m_bundle.path(m_name, "ui");
    if (!path) {
        reportDiagnostic("There is no interface file \"" + m_name + "\" in the bundle \"" +
                         m_bundle.directory().string() + "\".");
        return nullptr;
    }
    QFile file(QString::fromStdString(*path));
    const LoaderInUse loader;
    if (file.open(QFile::ReadOnly)) {
        loader->setWorkingDirectory(QFileInfo(file).dir());  // where the file's own file names start
        if (QWidget* const view = loader->load(&file)) return std::unique_ptr<UIView>(view);
    }
    const QString reason = file.error() ? file.errorString() : loader->errorString();
    reportDiagnostic("The interface file \"" + *path + "\" cannot be used: " + reason.toStdString());
    return nullptr;
}

void UINib::registerView(std::string_view className, ViewFactory factory) {
    expectMainThread("UINib");
    factories().insert_or_assign(std::string(className), std::move(factory));
}

}  // namespace torvel
