unit Settings;

interface

uses
  Windows, Messages, SysUtils, Classes, Graphics, Controls, Forms, Dialogs,
  StdCtrls, ExtCtrls, ComCtrls;

type
  TSettingsForm = class(TForm)
    PageControl: TPageControl;
    GeneralSheet: TTabSheet;
    AutoSaveCheck: TCheckBox;
    RecentLabel: TLabel;
    RecentEdit: TEdit;
    ModeGroup: TRadioGroup;
    ButtonPanel: TPanel;
    OkButton: TButton;
    CancelButton: TButton;
    procedure FormShow(Sender: TObject);
  end;

var
  SettingsForm: TSettingsForm;

implementation

{$R *.dfm}

procedure TSettingsForm.FormShow(Sender: TObject);
begin
  { ѕерва€ страница всегда открываетс€ при показе }
  PageControl.ActivePage := GeneralSheet;
end;

end.
