#include "mainwindow.h"

#include "module_protocol.h"
#include "setting_module.h"
#include "texts.h"
#include "ui_mainwindow.h"

#include <QDebug>
#include <QFileDialog>
#include <QMessageBox>

namespace {

/// A line edit and its place in a parameter set.
struct TextField {
    QLineEdit *Ui_MainWindow::*field;
    QString setting_module::*member;
    const char *saveDefault; ///< saved for an empty field
};

/// A combo box and its place in a parameter set.
struct IndexField {
    QComboBox *Ui_MainWindow::*field;
    int setting_module::*member;
    int saveDefault;                  ///< saved for the empty item
    const char *traceLabel = nullptr; ///< follows the loaded index in the debug output
};

using Ui = Ui_MainWindow;
using Store = setting_module;

/// In the order in which loading a file fills the form.
const std::variant<TextField, IndexField> fields[] = {
    TextField{&Ui::lineEdit_ip, &Store::ipAddress, "192.168.0.1"},
    TextField{&Ui::lineEdit_mask, &Store::mask, "255.255.255.0"},
    TextField{&Ui::lineEdit_gateway, &Store::gateway, "0.0.0.0"},
    TextField{&Ui::lineEdit_portTCP, &Store::portTcp, "502"},
    IndexField{&Ui::comboBox, &Store::parity, 1},
    IndexField{&Ui::comboBox_speed, &Store::speedRs485, 4, "SPERD_RS485"},
    IndexField{&Ui::comboBox_2, &Store::stopBit, 1},
    IndexField{&Ui::comboBox_mode, &Store::modeTcp, 1, "tcp -mode"},
    TextField{&Ui::lineEdit_timewait, &Store::timeoutResponse, "1000"},
    TextField{&Ui::lineEdit_ipservertcp, &Store::ipServerTcp, "192.168.0.10"},
    TextField{&Ui::lineEdit_timeout, &Store::timeoutTcp, "180"},
    TextField{&Ui::lineEdit_rtu_virtual_id, &Store::rtuVirtualId, "1"},
};

QString textOr(const QLineEdit *field, const char *saveDefault)
{
    return field->text().isEmpty() ? QString(saveDefault) : field->text();
}

void fillStore(Store *store, const Ui *ui, const TextField &row)
{
    store->*row.member = textOr(ui->*row.field, row.saveDefault);
}

void fillStore(Store *store, const Ui *ui, const IndexField &row)
{
    const int index = (ui->*row.field)->currentIndex();
    store->*row.member = index == 0 ? row.saveDefault : index;
}

void fillForm(Ui *ui, const Store &store, const TextField &row)
{
    (ui->*row.field)->setText(store.*row.member);
}

void fillForm(Ui *ui, const Store &store, const IndexField &row)
{
    (ui->*row.field)->setCurrentIndex(store.*row.member);
}

void fillSlaveId(Ui *ui, const QString &slaveId)
{
    const bool isOff = slaveId == protocol::off;
    ui->lineEdit_tcp_id->setText(isOff ? QString() : slaveId);
    ui->lineEdit_tcp_id->setEnabled(!isOff);
    ui->lineEdit_tcp_id->setStyleSheet(isOff ? mark::lilacFromFile : mark::none);
    ui->checkBox->setChecked(isOff);
}

} // namespace

void MainWindow::on_action_save_triggered()
{
    OnSaveSetting_File();
}

void MainWindow::OnSaveSetting_File()
{
    auto *store = new setting_module;
    store->moduleName = ui->conbox0->currentText();
    for (const auto &field : fields)
        std::visit([&](const auto &row) { fillStore(store, ui, row); }, field);
    store->tcpSlaveId = ui->checkBox->isChecked() ? QString(protocol::off)
                                                  : textOr(ui->lineEdit_tcp_id, protocol::off);
    store->SaveNTSetting();
    store->deleteLater();
}

void MainWindow::on_action_open_2_triggered()
{
    settingsFileName = QFileDialog::getOpenFileName(nullptr, tr(text::settings), QString(),
                                                    tr(text::settingsFilter));
    ui->action->setText(QString(text::currentFile).arg(settingsFileName));
    loadSettingsFile(Traces::All);
}

void MainWindow::on_action_triggered()
{
    loadSettingsFile(Traces::First);
}

// Named like the slot of an action "show". The form has none, which Qt reports at each start.
void MainWindow::on_action_show_triggered() { }

void MainWindow::loadSettingsFile(Traces traces)
{
    if (settingsFileName.isEmpty()) {
        QMessageBox::critical(this, tr(text::error), text::noFileChosen);
        return;
    }
    auto *store = new setting_module;
    store->LoadNTSetting(settingsFileName);

    ui->conbox0->setCurrentText(store->moduleName);
    qDebug() << store->moduleName << "modul_name";
    for (const auto &field : fields) {
        std::visit([&](const auto &row) { fillForm(ui, *store, row); }, field);
        const auto *index = std::get_if<IndexField>(&field);
        if (traces == Traces::All && index && index->traceLabel)
            qDebug() << store->*index->member << index->traceLabel;
    }
    fillSlaveId(ui, store->tcpSlaveId);
    ui->lineEdit_version->setStyleSheet(mark::lilac);
    ui->lineEdit_MAC->setStyleSheet(mark::lilacFromFile);
    store->deleteLater();
}
