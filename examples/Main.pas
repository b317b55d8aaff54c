unit Main;

interface

uses
  Windows, Messages, SysUtils, Classes, Graphics, Controls, Forms, Dialogs,
  StdCtrls, ExtCtrls, ComCtrls, Menus, ActnList, Frame1;

type
  TMainForm = class(TForm)
    MainMenu: TMainMenu;
    FileMenu: TMenuItem;
    FileOpenItem: TMenuItem;
    FileExitItem: TMenuItem;
    ActionList: TActionList;
    OpenAction: TAction;
    ExitAction: TAction;
    TopPanel: TPanel;
    CaptionLabel: TLabel;
    NameEdit: TEdit;
    OkButton: TButton;
    SettingsButton: TButton;
    NotesMemo: TMemo;
    StatusBar: TStatusBar;
    InfoFrame1: TInfoFrame;
    procedure FormCreate(Sender: TObject);
    procedure OpenActionExecute(Sender: TObject);
    procedure ExitActionExecute(Sender: TObject);
    procedure OkButtonClick(Sender: TObject);
    procedure SettingsButtonClick(Sender: TObject);
  private
    FOpenCount: Integer;
    procedure UpdateStatus;
  public
    property OpenCount: Integer read FOpenCount;
  end;

var
  MainForm: TMainForm;

implementation

uses
  Settings, DataMod, Utils;

{$R *.dfm}

procedure TMainForm.FormCreate(Sender: TObject);
begin
  Caption := DefaultCaption;
  FOpenCount := 0;
  UpdateStatus;
end;

procedure TMainForm.UpdateStatus;
begin
  StatusBar.SimpleText := Format('Открыто файлов: %d', [FOpenCount]);
end;

procedure TMainForm.OpenActionExecute(Sender: TObject);
begin
  Inc(FOpenCount);
  UpdateStatus;
end;

procedure TMainForm.ExitActionExecute(Sender: TObject);
begin
  Close;
end;

procedure TMainForm.OkButtonClick(Sender: TObject);
begin
  if Trim(NameEdit.Text) = '' then
  begin
    ShowMessage('Введите имя');
    Exit;
  end;
  NotesMemo.Lines.Add(TrimCaption(NameEdit.Text, 40));
end;

procedure TMainForm.SettingsButtonClick(Sender: TObject);
begin
  with TSettingsForm.Create(Self) do
  try
    ShowModal;
  finally
    Free;
  end;
end;

end.
