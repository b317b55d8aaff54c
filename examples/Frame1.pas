unit Frame1;

interface

uses
  Windows, Messages, SysUtils, Classes, Graphics, Controls, Forms, Dialogs,
  StdCtrls, ExtCtrls;

type
  TInfoFrame = class(TFrame)
    Bevel: TBevel;
    TitleLabel: TLabel;
    SizeLabel: TLabel;
  public
    procedure ShowSize(Size: Int64);
  end;

implementation

{$R *.dfm}

procedure TInfoFrame.ShowSize(Size: Int64);
begin
  SizeLabel.Caption := Format('Размер: %d байт', [Size]);
end;

end.
