// What the map page is told about its tiles: where they come from, whose maps they are, the notice without any.
#pragma once

#include <QObject>
#include <QString>

// Published to the page as "tiles" beside "sharedState". Lives on the user-interface thread.
class MapTileState : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString urlTemplate READ urlTemplate CONSTANT)
    Q_PROPERTY(QString attribution READ attribution NOTIFY sourcesChanged)
    Q_PROPERTY(QString noTilesText READ noTilesText NOTIFY noTilesTextChanged)
public:
    explicit MapTileState(QObject* parent = nullptr);

    // The tile layer's address, "{z}", "{x}", "{y}" to be filled in by the page.
    QString urlTemplate() const;
    // The credit of the maps in use, plain text.
    QString attribution() const { return m_attribution; }
    // Shown once on the map when none of a view's tiles could be had.
    QString noTilesText() const;

    // A map file was added or removed: the page takes the new credit and loads its tiles again.
    void setSources(const QString& attribution);
    // Call after the interface language has changed.
    void retranslate();

signals:
    void sourcesChanged(const QString& attribution);
    void noTilesTextChanged(const QString& text);

private:
    QString m_attribution;
};
