	TButton *OKButton;
	TLabel *CaptionLabel;
	void __fastcall FormCreate(TObject *Sender);
	void __fastcall WndProc(Messages::TMessage &Message,
		int Extra);
	void __fastcall OKButtonClick(TObject *Sender);
	bool __fastcall CanClose(void);
	TEdit *NameEdit;
